// len, str, list, sort and reverse.

#include <algorithm>
#include <cmath>
#include <utility>

#include "LumoKit/base/Unicode.h"
#include "LumoKit/values/builtins/BuiltinCall.h"
#include "LumoKit/values/ValueFormatter.h"

namespace lumo {

namespace {

std::vector<Value> sortedNumbers(const std::vector<Value>& items) {
    // Every item is read in the unit of the first item that has one, so 50 cm sorts before 1 m.
    const auto withUnit =
        std::find_if(items.begin(), items.end(), [](const Value& v) { return v.unit != nullptr; });
    const Value reference = withUnit == items.end() ? Value::plain(0) : withoutPercent(*withUnit);
    std::vector<std::pair<double, std::size_t>> keys;
    for (std::size_t i = 0; i < items.size(); ++i) {
        keys.emplace_back(alignUnits(reference, withoutPercent(items[i])).right, i);
    }
    // NaN goes last, so the ordering stays strict and weak.
    std::stable_sort(keys.begin(), keys.end(), [](const auto& a, const auto& b) {
        if (std::isnan(a.first) || std::isnan(b.first))
            return !std::isnan(a.first) && std::isnan(b.first);
        return a.first < b.first;
    });
    std::vector<Value> sorted;
    for (const auto& key : keys)
        sorted.push_back(items[key.second]);
    return sorted;
}

std::vector<Value> sortedTexts(std::vector<Value> items) {
    std::vector<std::pair<std::u32string, std::size_t>> keys;
    for (std::size_t i = 0; i < items.size(); ++i)
        keys.emplace_back(unicode::decode(unicode::nfc(items[i].text())), i);
    std::stable_sort(keys.begin(), keys.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<Value> sorted;
    for (const auto& key : keys)
        sorted.push_back(std::move(items[key.second]));
    return sorted;
}

} // namespace

Value lengthOf(const BuiltinCall& call) {
    const Value& x = call.args.front();
    if (x.isNumber())
        throw CalcError(MessageKind::lenUsage);
    const std::size_t count = x.isList() ? x.items().size() : unicode::graphemeCount(x.text());
    return Value::plain(static_cast<double>(count));
}

Value textOf(const BuiltinCall& call) {
    const Value& x = call.args.front();
    // A text is already text: str("a") is "a", not the quoted form the answer column shows.
    if (x.isText())
        return x;
    // Without grouping, so that the text reads back as a number and does not depend on a
    // display setting; this is the answer column's form otherwise (str(120 mm) is 120 mm).
    return Value::makeText(ValueFormatter::format(x, call.options, Grouping::none));
}

Value listOf(const BuiltinCall& call) {
    const Value& x = call.args.front();
    // A list is already what list() makes.
    if (x.isList())
        return x;
    if (!x.isText())
        failCannotTake(call.name, x);
    std::vector<Value> items;
    for (std::string& character : unicode::graphemes(x.text()))
        items.push_back(Value::makeText(std::move(character)));
    return Value::list(std::move(items));
}

Value sortOf(const BuiltinCall& call) {
    const Value& x = call.args.front();
    if (!x.isList())
        throw CalcError(MessageKind::sortUsage);
    const auto isNumber = [](const Value& v) { return v.isNumber(); };
    const auto isText = [](const Value& v) { return v.isText(); };
    const std::vector<Value>& items = x.items();
    if (std::all_of(items.begin(), items.end(), isNumber))
        return Value::list(sortedNumbers(items));
    if (std::all_of(items.begin(), items.end(), isText))
        return Value::list(sortedTexts(items));
    throw CalcError(MessageKind::sortMixed);
}

Value reverseOf(const BuiltinCall& call) {
    const Value& x = call.args.front();
    if (x.isNumber())
        throw CalcError(MessageKind::reverseUsage);
    if (x.isList())
        return Value::list(std::vector<Value>(x.items().rbegin(), x.items().rend()));
    std::vector<std::string> characters = unicode::graphemes(x.text());
    std::string reversed;
    reversed.reserve(x.text().size());
    for (auto it = characters.rbegin(); it != characters.rend(); ++it)
        reversed += *it;
    return Value::makeText(std::move(reversed));
}

} // namespace lumo
