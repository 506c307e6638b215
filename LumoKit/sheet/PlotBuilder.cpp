#include "LumoKit/sheet/PlotBuilder.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "LumoKit/base/CalcError.h"
#include "LumoKit/base/Overloaded.h"
#include "LumoKit/base/Unicode.h"
#include "LumoKit/language/Lexer.h"
#include "LumoKit/values/Units.h"

namespace lumo {

namespace {

// A curve is sampled at 241 points (240 steps); a surface on a 21 × 21 grid (20 steps).
constexpr int curveSteps = 240;
constexpr int surfaceSteps = 20;
constexpr double defaultLow = -10;
constexpr double defaultHigh = 10;
// Two neighbours of opposite sign further apart than this share of the y range straddle an
// asymptote (1 / x at 0) and are not joined.
constexpr double jumpShare = 0.6;
// Head room above (and below) the bars, as a share of the value range.
constexpr double barMargin = 0.12;

[[noreturn]] void fail(MessageKind kind) {
    throw CalcError(kind);
}

[[noreturn]] void failNotCurve(const Value& value) {
    throw CalcError(MessageKind::plotNotCurve, {kindName(value)});
}

// ---- The call as written ----------------------------------------------------------------

// Texts of the call taken from the line as the user wrote it (after normalisation, so
// full-width brackets and 、 read like their ASCII forms).
struct CallSource {
    std::string title;
    std::vector<std::string> arguments;
    std::vector<std::string> listItems; // items of a single literal list argument
};

// The first character at or after `from` that is `wanted`.
std::uint32_t findCharacter(const SourceText& source, std::uint32_t from, std::uint32_t to,
                            std::string_view wanted) {
    while (from < to && source.at(from) != wanted)
        ++from;
    return from;
}

// The items of a bracketed group as written, each from the delimiter before it to the one
// after it, so that brackets and signs around an item ("(a)", "+5") stay in its text. A
// tree's ranges stop at an item's own first and last character: between two items lie only
// such brackets and signs, white space and the one comma.
std::vector<std::string> writtenItems(const SourceText& source, std::uint32_t open, std::uint32_t close,
                                      ExprList items) {
    std::vector<std::string> texts;
    std::uint32_t from = open + 1;
    for (auto item = items.begin(); item != items.end();) {
        const SourceRange current = item->range();
        const std::uint32_t to =
            ++item != items.end() ? findCharacter(source, current.end, item->range().begin, ",") : close;
        texts.push_back(unicode::trim(source.slice({from, to})));
        from = to + 1;
    }
    return texts;
}

CallSource readCallSource(const Expr& callExpression, const expr::Call& call, std::string_view sourceText) {
    const SourceText source(sourceText);
    const SourceRange range = callExpression.range();
    CallSource written;
    written.title = std::string(source.slice(range));
    // The name holds no "(", so the first one is the call's; the range ends at its ")".
    const std::uint32_t open = findCharacter(source, range.begin, range.end, "(");
    written.arguments = writtenItems(source, open, range.end - 1, call.args);

    // chart([a, b, c]): the list literal fills the whole argument list.
    if (call.args.size() == 1) {
        const Expr& argument = *call.args.front();
        if (const auto* list = argument.as<expr::List>();
            list && source.slice(argument.range()) == written.arguments[0])
            written.listItems =
                writtenItems(source, argument.range().begin, argument.range().end - 1, list->items);
    }
    return written;
}

// ---- Values as plotted numbers ------------------------------------------------------------

// A number is plotted as the answer column shows it: in its own unit, a percent as its figure
// (15% is 15). Later values whose unit has the dimensions of the first plotted unit are
// converted into it, so 1 m and 50 cm stand as 1 and 0.5; anything else keeps its own number.
class NumberScale {
public:
    double plotted(const Value& value) {
        if (!value.unit)
            return value.number;
        if (!m_unit) {
            m_unit = value.unit;
            return value.number;
        }
        if (value.unit == m_unit || !value.unit->sameDimensions(*m_unit))
            return value.number;
        return convert(value.number, *value.unit, *m_unit);
    }

    void notePercent() { m_sawPercent = true; }

    // The unit's display text; "%" for percent figures without a unit; nothing for plain numbers.
    std::optional<std::string> label() const {
        if (m_unit)
            return m_unit->display;
        if (m_sawPercent)
            return std::string("%");
        return std::nullopt;
    }

private:
    UnitRef m_unit;
    bool m_sawPercent = false;
};

// The finite plotted number of a value, or nothing for texts, lists, infinities and NaN.
std::optional<double> finiteNumber(const Value& value, NumberScale& scale) {
    if (!value.isNumber() || !std::isfinite(value.number))
        return std::nullopt;
    const double number = scale.plotted(value);
    if (!std::isfinite(number))
        return std::nullopt;
    if (value.isPercent())
        scale.notePercent();
    return number;
}

// The value at one point, or nothing where evaluation fails (a gap or a hole).
std::optional<Value> evaluateAt(const Evaluator& evaluator, const Expr& expression) {
    try {
        return evaluator.evaluate(expression);
    } catch (const CalcError&) {
        return std::nullopt;
    }
}

double stepPoint(PlotRange range, int step, int steps) {
    return range.low + (range.high - range.low) * step / steps;
}

// ---- Ranges -------------------------------------------------------------------------------

double rangeEnd(const Expr* expression, EvalContext& context, const EvaluationOptions& options) {
    const Value value = Evaluator(options, &context).evaluate(*expression);
    // A text or list has no place on an axis; it fails like any other unusable end.
    if (!value.isNumber() || !std::isfinite(value.number))
        fail(MessageKind::plotLeftNotLess);
    return value.number;
}

PlotRange readRange(const Expr* left, const Expr* right, EvalContext& context,
                    const EvaluationOptions& options) {
    const PlotRange range{rangeEnd(left, context, options), rangeEnd(right, context, options)};
    if (!(range.low < range.high))
        fail(MessageKind::plotLeftNotLess);
    return range;
}

void widen(std::optional<PlotRange>& range, double value) {
    if (!range)
        range = PlotRange{value, value};
    range->low = std::min(range->low, value);
    range->high = std::max(range->high, value);
}

// ---- Curves -------------------------------------------------------------------------------

bool straddlesAsymptote(double a, double b, double height) {
    return std::abs(a - b) > jumpShare * height && (a < 0) != (b < 0);
}

std::vector<std::vector<PlotPoint>> splitSegments(const std::vector<std::optional<PlotPoint>>& samples,
                                                  double height) {
    std::vector<std::vector<PlotPoint>> segments;
    std::vector<PlotPoint> current;
    const auto flush = [&] {
        // A lone point is not a line.
        if (current.size() >= 2)
            segments.push_back(std::move(current));
        current.clear();
    };
    for (const auto& sample : samples) {
        if (!sample) {
            flush();
            continue;
        }
        if (!current.empty() && straddlesAsymptote(current.back().y, sample->y, height))
            flush();
        current.push_back(*sample);
    }
    flush();
    return segments;
}

PlotSpec buildCurve(const expr::Call& call, EvalContext& context, const EvaluationOptions& options) {
    const auto& args = call.args;
    if (args.empty())
        fail(MessageKind::plotNoExpression);
    if (args.size() == 2)
        fail(MessageKind::plotOneEnd);
    const PlotRange xRange =
        args.size() == 3 ? readRange(args[1], args[2], context, options) : PlotRange{defaultLow, defaultHigh};

    PlotContext plotContext(context);
    const Evaluator evaluator(options, &plotContext);
    NumberScale scale;
    std::optional<PlotRange> yRange;
    std::vector<std::optional<PlotPoint>> samples;
    samples.reserve(curveSteps + 1);
    for (int i = 0; i <= curveSteps; ++i) {
        const double x = stepPoint(xRange, i, curveSteps);
        plotContext.setX(x);
        const auto value = evaluateAt(evaluator, *args[0]);
        if (value && (value->isList() || value->isText()))
            failNotCurve(*value);
        const auto y = value ? finiteNumber(*value, scale) : std::nullopt;
        if (y)
            widen(yRange, *y);
        samples.push_back(y ? std::optional(PlotPoint{x, *y}) : std::nullopt);
    }
    if (!yRange)
        fail(MessageKind::plotNoCurve);

    PlotSpec result;
    result.kind = PlotSpec::Kind::curve;
    result.segments = splitSegments(samples, yRange->high - yRange->low);
    if (result.segments.empty())
        fail(MessageKind::plotNoCurve);
    result.xRange = xRange;
    result.yRange = *yRange;
    result.unitLabel = scale.label();
    return result;
}

// ---- Surfaces -----------------------------------------------------------------------------

bool refersToName(const Expr& expression, std::string_view name) {
    const auto refers = [name](const Expr* child) { return child && refersToName(*child, name); };
    return expression.visit(overloaded{
        [&](const expr::Identifier& node) { return node.name == name; },
        // "3y" is a unit application whose name the evaluator first asks the context for.
        [&](const expr::UnitApply& node) { return node.unit == name || refers(node.operand); },
        [&](const expr::Measure& node) { return node.unit == name; },
        [&](const expr::PoweredMeasure& node) { return node.unit->name == name; },
        [&](const expr::List& node) {
            return std::any_of(node.items.begin(), node.items.end(),
                               [&](const Expr& item) { return refers(&item); });
        },
        [&](const expr::Call& node) {
            return std::any_of(node.args.begin(), node.args.end(),
                               [&](const Expr& item) { return refers(&item); });
        },
        [&](const expr::Index& node) { return refers(node.target) || refers(node.position); },
        [&](const expr::Unary& node) { return refers(node.operand); },
        [&](const expr::Chain& node) {
            return refers(node.first) ||
                   std::any_of(node.links.begin(), node.links.end(), [&](const expr::Link& link) {
                       return link.name() == name || refers(link.node());
                   });
        },
        [&](const expr::Percent& node) { return refers(node.operand); },
        [&](const expr::Convert& node) { return refers(node.operand); },
        [&](const expr::PercentOf& node) { return refers(node.percentage) || refers(node.base); },
        [](const expr::Number&) { return false; },
        [](const expr::Text&) { return false; },
        [](const expr::Ref&) { return false; },
    });
}

bool isSurfaceCall(const expr::Call& call) {
    const auto count = call.args.size();
    return count >= 4 || (count >= 1 && refersToName(*call.args[0], surfaceVariable));
}

PlotSpec buildSurface(const expr::Call& call, EvalContext& context, const EvaluationOptions& options) {
    const auto& args = call.args;
    if (args.size() != 1 && args.size() != 3 && args.size() != 5)
        fail(MessageKind::surfaceArguments);
    const PlotRange defaults{defaultLow, defaultHigh};
    const PlotRange xRange = args.size() >= 3 ? readRange(args[1], args[2], context, options) : defaults;
    const PlotRange yRange = args.size() == 5 ? readRange(args[3], args[4], context, options) : defaults;

    PlotContext plotContext(context);
    const Evaluator evaluator(options, &plotContext);
    NumberScale scale;
    std::optional<PlotRange> zRange;
    std::vector<std::vector<std::optional<double>>> rows(surfaceSteps + 1);
    for (int row = 0; row <= surfaceSteps; ++row) {
        plotContext.setY(stepPoint(yRange, row, surfaceSteps));
        rows[row].reserve(surfaceSteps + 1);
        for (int column = 0; column <= surfaceSteps; ++column) {
            plotContext.setX(stepPoint(xRange, column, surfaceSteps));
            const auto value = evaluateAt(evaluator, *args[0]);
            const auto z = value ? finiteNumber(*value, scale) : std::nullopt;
            if (z)
                widen(zRange, *z);
            rows[row].push_back(z);
        }
    }
    if (!zRange)
        fail(MessageKind::plotNoSurface);

    PlotSpec result;
    result.kind = PlotSpec::Kind::surface;
    result.surface = std::move(rows);
    result.xRange = xRange;
    result.yRange = yRange;
    result.zRange = zRange;
    result.unitLabel = scale.label();
    return result;
}

// ---- Bars ---------------------------------------------------------------------------------

PlotRange barRange(const std::vector<PlotBar>& bars) {
    double top = 0;
    double bottom = 0;
    for (const PlotBar& bar : bars) {
        top = std::max(top, bar.value);
        bottom = std::min(bottom, bar.value);
    }
    // The range always holds 0, so it is empty only when every bar is 0.
    if (!(bottom < top))
        return {bottom, bottom + 1};
    const double margin = barMargin * (top - bottom);
    return {bottom < 0 ? bottom - margin : bottom, top > 0 ? top + margin : top};
}

std::vector<std::string> positionLabels(std::size_t count) {
    std::vector<std::string> labels;
    for (std::size_t i = 0; i < count; ++i)
        labels.push_back(std::to_string(i));
    return labels;
}

PlotSpec buildBars(const expr::Call& call, const CallSource& source, EvalContext& context,
                   const EvaluationOptions& options) {
    const Evaluator evaluator(options, &context);
    std::vector<Value> values;
    for (const Expr& argument : call.args)
        values.push_back(evaluator.evaluate(argument));

    std::vector<std::string> labels;
    if (values.size() == 1 && values.front().isList()) {
        values = std::vector<Value>(values.front().items());
        if (source.listItems.size() == values.size())
            labels = source.listItems;
    } else if (source.arguments.size() == values.size()) {
        labels = source.arguments;
    }
    if (values.empty())
        fail(MessageKind::chartNoValues);
    if (labels.size() != values.size())
        labels = positionLabels(values.size());

    PlotSpec result;
    result.kind = PlotSpec::Kind::bars;
    NumberScale scale;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const auto number = finiteNumber(values[i], scale);
        if (!number)
            fail(MessageKind::chartNotChartable);
        result.bars.push_back({labels[i], *number});
    }
    result.xRange = {0, static_cast<double>(result.bars.size())};
    result.yRange = barRange(result.bars);
    result.unitLabel = scale.label();
    return result;
}

} // namespace

bool isPlotWord(std::string_view name) {
    return name == "plot" || name == "graph" || name == "グラフ";
}
bool isChartWord(std::string_view name) {
    return name == "chart" || name == "bars" || name == "棒グラフ";
}

std::optional<Value> PlotContext::valueOf(const std::string& name) {
    if (name == plotVariable)
        return Value::plain(m_x);
    if (m_y && name == surfaceVariable)
        return Value::plain(*m_y);
    return m_base.valueOf(name);
}

std::optional<Value> PlotContext::answerOnLine(std::int64_t line) {
    return m_base.answerOnLine(line);
}

std::optional<Value> PlotContext::callUserFunction(const std::string& name, const std::vector<Value>& args) {
    return m_base.callUserFunction(name, args);
}

PlotSpec buildPlot(const Expr& callExpression, std::string_view sourceText, EvalContext& context,
                   const EvaluationOptions& options) {
    const auto& call = *callExpression.as<expr::Call>();
    const CallSource source = readCallSource(callExpression, call, sourceText);
    PlotSpec result;
    if (isChartWord(call.name))
        result = buildBars(call, source, context, options);
    else if (isSurfaceCall(call))
        result = buildSurface(call, context, options);
    else
        result = buildCurve(call, context, options);
    result.title = source.title;
    return result;
}

} // namespace lumo
