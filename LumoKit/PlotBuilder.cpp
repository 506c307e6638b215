#include "PlotBuilder.h"

namespace lumo {

bool isPlotWord(std::string_view name) { return name == "plot" || name == "graph" || name == "グラフ"; }
bool isChartWord(std::string_view name) { return name == "chart" || name == "bars" || name == "棒グラフ"; }

std::optional<Value> PlotContext::valueOf(const std::string& name) {
    if (name == "x") return Value::plain(m_x);
    if (name == "y" && m_y) return Value::plain(*m_y);
    return m_base.valueOf(name);
}

std::optional<Value> PlotContext::answerOnLine(std::int64_t line) { return m_base.answerOnLine(line); }

std::optional<Value> PlotContext::callFunction(const std::string& name, const std::vector<Value>& args) {
    return m_base.callFunction(name, args);
}

PlotSpec buildPlot(const expr::Call&, std::string_view, EvalContext&) { return {}; }

} // namespace lumo
