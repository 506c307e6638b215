#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "LumoKit/base/Messages.h"
#include "LumoKit/values/Units.h"

namespace lumo {

/// Every answer, named value, list item and argument: a number in its own unit (optionally
/// a percent), a list, or a text. A plain record, copied freely: a list's items and a text's
/// characters are shared by copies until one of them is changed, so that keeping an answer
/// for prev, for its line and for the result costs one copy of a long list, not three.
struct Value {
    enum class Kind : std::uint8_t { list, text, number };

    double number = 0; // in the value's own unit; the figure as written for a percent
    UnitRef unit;      // absent for plain numbers, lists and texts

    Value() = default;
    Value(const Value& other) noexcept : number(other.number), unit(other.unit), m_word(other.m_word) {
        retain();
    }
    // A moved-from value keeps its kind, empty.
    Value(Value&& other) noexcept
        : number(other.number), unit(std::move(other.unit)),
          m_word(std::exchange(other.m_word, other.m_word & tagMask)) {}
    Value& operator=(Value other) noexcept {
        number = other.number;
        unit = std::move(other.unit);
        std::swap(m_word, other.m_word);
        return *this;
    }
    ~Value() { release(); }

    Kind kind() const;
    bool isNumber() const { return tag() <= percentTag; }
    bool isList() const { return tag() == listTag; }
    bool isText() const { return tag() == textTag; }
    /// A number written as a percentage, whose number is the figure as written.
    bool isPercent() const { return tag() == percentTag; }

    /// The items of a list; empty for any other kind.
    const std::vector<Value>& items() const;
    /// The characters of a text; empty for any other kind.
    const std::string& text() const;
    /// A list's items or a text's characters to change in place, copied first when another
    /// value shares them. Only for a value of that kind.
    std::vector<Value>& editItems();
    std::string& editText();

    static Value plain(double number);
    static Value withUnit(double number, UnitRef unit);
    static Value percent(double figure);
    static Value list(std::vector<Value> items);
    static Value makeText(std::string text);

    bool operator==(const Value& other) const;

private:
    struct Counted {
        std::atomic<std::uint32_t> holders{1};
    };
    struct CountedItems;
    struct CountedText;

    // The kind, and for lists and texts their shared payload, in one word: the tag in the low
    // two bits, the payload's address above them (none for numbers and for an empty list or
    // text). A value is three words, so a long list costs three words an item.
    static constexpr std::uintptr_t numberTag = 0, percentTag = 1, listTag = 2, textTag = 3, tagMask = 3;

    std::uintptr_t tag() const { return m_word & tagMask; }
    Counted* counted() const { return reinterpret_cast<Counted*>(m_word & ~tagMask); }
    template <typename Payload> Payload* payload() const { return static_cast<Payload*>(counted()); }
    void hold(Counted* payload, std::uintptr_t kindTag) {
        release();
        m_word = reinterpret_cast<std::uintptr_t>(payload) | kindTag;
    }
    void retain() const;
    void release() {
        if (m_word > tagMask)
            releasePayload();
    }
    void releasePayload();

    std::uintptr_t m_word = numberTag;
};

struct Value::CountedItems : Counted {
    std::vector<Value> items;
};

struct Value::CountedText : Counted {
    std::string text;
};

static_assert(sizeof(Value) == 3 * sizeof(void*), "a list holds a value per item");

inline void Value::retain() const {
    if (m_word > tagMask)
        counted()->holders.fetch_add(1, std::memory_order_relaxed);
}

inline Value::Kind Value::kind() const {
    constexpr Kind kinds[] = {Kind::number, Kind::number, Kind::list, Kind::text};
    return kinds[tag()];
}

inline const std::vector<Value>& Value::items() const {
    static const std::vector<Value> none;
    return isList() && m_word > tagMask ? payload<CountedItems>()->items : none;
}

inline const std::string& Value::text() const {
    static const std::string none;
    return isText() && m_word > tagMask ? payload<CountedText>()->text : none;
}

/// The largest text "+" and repetition build, in characters, and the largest list, in items.
inline constexpr std::size_t maxTextLength = 100000;
inline constexpr std::size_t maxListItems = 100000;
/// The heaviest value (see valueWeight) that one operation builds: far above any real sheet,
/// it keeps a list of huge texts from taking all memory.
constexpr std::size_t maxValueWeight() {
    return 20 * maxListItems;
}

/// A measure of the memory a value holds: one per number, list and list item, and one more
/// per 64 bytes of text. Counting stops once it passes `limit`.
std::size_t valueWeight(const Value& value, std::size_t limit = maxValueWeight());

/// The kind's name to insert into messages: "表"/"a list", "文字"/"text", "数"/"a number".
Message kindName(const Value& value);

/// A percent operand made its plain fraction (figure ÷ 100); other values unchanged.
Value withoutPercent(const Value& value);
/// Whether the value is a number written as a percentage.
bool isPercentNumber(const Value& value);

// The five operators. Each returns a new value or throws CalcError.
Value add(const Value& left, const Value& right);
/// left + right written into `left`: the same as left = add(left, right), but a number added
/// to a number in the same unit is added in place. A sheet's running sums add every line.
void addInto(Value& left, const Value& right);
Value subtract(const Value& left, const Value& right);
Value multiply(const Value& left, const Value& right);
Value divide(const Value& left, const Value& right);
Value power(const Value& base, const Value& exponent);

/// The numbers of two number values in the left one's unit: converts the right into the
/// left's unit when both have units. Throws the "can't be added together" message when the
/// dimensions differ, and the kind-mismatch message (operator "この計算"/"this calculation")
/// when either is not a number.
struct AlignedNumbers {
    double left = 0;
    double right = 0;
    UnitRef unit;
};
AlignedNumbers alignUnits(const Value& left, const Value& right);

/// The shared kind-mismatch failure: "{a}と{b}は {op} で計算できません" /
/// "{op} doesn't work between {a} and {b}". The operation is an operator as written or a
/// fragment such as MessageKind::thisCalculation.
[[noreturn]] void throwKindMismatch(const Value& left, const Value& right, Message operation);

} // namespace lumo
