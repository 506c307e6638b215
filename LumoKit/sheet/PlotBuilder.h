#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "LumoKit/language/Parser.h"
#include "LumoKit/sheet/PlotDescription.h"
#include "LumoKit/values/Evaluator.h"

namespace lumo {

/// The names a plotted expression runs over: x along a curve, and y too across a surface.
inline constexpr std::string_view plotVariable = "x";
inline constexpr std::string_view surfaceVariable = "y";

/// "plot", "graph" and "グラフ": calls drawn as a curve or a three-axis surface.
bool isPlotWord(std::string_view name);
/// "chart", "bars" and "棒グラフ": calls drawn as bars.
bool isChartWord(std::string_view name);

/// Builds the plot for a call of a plot or chart word (an expression holding an expr::Call);
/// throws CalcError with the message. `sourceText` is the text the call was parsed from: the
/// title is the call as written in it, and bar labels are the argument texts as written (for a
/// single list argument, the item texts of a literal list, otherwise the positions "0", "1", …
/// as indexing counts them).
PlotSpec buildPlot(const Expr& call, std::string_view sourceText, EvalContext& context,
                   const EvaluationOptions& options);

/// The context in which a plotted expression is evaluated at one point: x (and y for a
/// surface) shadow every other meaning of those names; every other question goes to the base.
class PlotContext final : public EvalContext {
public:
    explicit PlotContext(EvalContext& base) : m_base(base) {}

    void setX(double x) { m_x = x; }
    void setY(std::optional<double> y) { m_y = y; }
    double x() const { return m_x; }
    std::optional<double> y() const { return m_y; }

    std::optional<Value> valueOf(const std::string& name) override;
    std::optional<Value> answerOnLine(std::int64_t line) override;
    std::optional<Value> callUserFunction(const std::string& name, const std::vector<Value>& args) override;

private:
    EvalContext& m_base;
    double m_x = 0;
    std::optional<double> m_y;
};

} // namespace lumo
