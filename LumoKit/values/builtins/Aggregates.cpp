// min, max, sum and avg: over values and lists alike, nested lists item by item.

#include "LumoKit/values/builtins/BuiltinCall.h"

namespace lumo {

namespace {

template <bool largest> Value extreme(const BuiltinCall& call) {
    const std::vector<Value> values = flattened(call.args);
    if (values.empty())
        throw CalcError(MessageKind::needsValues, {call.name});
    Value best = numberArgument(call.name, values.front());
    for (std::size_t i = 1; i < values.size(); ++i) {
        const Value candidate = numberArgument(call.name, values[i]);
        const AlignedNumbers aligned = alignUnits(best, candidate);
        if (largest ? aligned.right > aligned.left : aligned.right < aligned.left)
            best = candidate;
    }
    return best;
}

Value total(const std::vector<Value>& values) {
    Value sum = withoutPercent(values.front());
    for (std::size_t i = 1; i < values.size(); ++i)
        sum = add(sum, withoutPercent(values[i]));
    return sum;
}

} // namespace

Value minimum(const BuiltinCall& call) {
    return extreme<false>(call);
}

Value maximum(const BuiltinCall& call) {
    return extreme<true>(call);
}

Value sumOf(const BuiltinCall& call) {
    const std::vector<Value> values = flattened(call.args);
    if (values.empty())
        throw CalcError(MessageKind::needsValues, {"sum"});
    return total(values);
}

Value averageOf(const BuiltinCall& call) {
    const std::vector<Value> values = flattened(call.args);
    // average is a synonym and shares the message of avg.
    if (values.empty())
        throw CalcError(MessageKind::needsValues, {"avg"});
    return divide(total(values), Value::plain(static_cast<double>(values.size())));
}

} // namespace lumo
