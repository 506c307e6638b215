#pragma once

// A corpus of unique notepad lines, the same on every machine: a fixed seed drives a generator
// whose output the standard fixes (std::mt19937), and every choice is taken from it by
// modulo, so no library's distribution can change the lines.
//
// The lines come in blocks of one theme (plain numbers, lengths, areas, masses, times) so
// that each block ends in a "sum" that answers: arithmetic, unit products, conversions, names
// defined and used further down, then "sum" and a blank line. Every line carries the same
// calculation as written for libqalculate and for math.js, for the peer comparison.

#include <cstdint>
#include <random>
#include <string>
#include <unordered_set>
#include <vector>

namespace lumo::bench {

/// One line of the corpus as each tool writes it. `name` is set on a line that defines one;
/// blank lines have empty texts.
struct CorpusLine {
    std::string lumo;
    std::string qalculate;
    std::string mathjs;
    std::string name;
};

class CorpusGenerator {
public:
    static constexpr std::uint32_t defaultSeed = 20261123;

    explicit CorpusGenerator(std::uint32_t seed = defaultSeed) : m_random(seed) {}

    /// Exactly `count` lines, every non-blank line different from every other.
    std::vector<CorpusLine> lines(int count) {
        std::vector<CorpusLine> out;
        out.reserve(static_cast<std::size_t>(count));
        while (static_cast<int>(out.size()) < count)
            addBlock(out, count);
        return out;
    }

private:
    enum class Theme { plain, length, area, mass, time };

    // A term of a sum, as each tool writes it.
    struct Term {
        std::string qalculate;
        std::string mathjs;
    };

    std::uint32_t pick(std::uint32_t range) { return static_cast<std::uint32_t>(m_random() % range); }

    // A number of 1 to 4 digits, with a decimal part one time in four.
    std::string number() {
        static constexpr std::uint32_t magnitudes[] = {10, 100, 1000, 10000};
        std::string text = std::to_string(1 + pick(magnitudes[pick(4)] - 1));
        if (pick(4) == 0)
            text += "." + std::to_string(1 + pick(9));
        return text;
    }

    std::string freshName(Theme theme) {
        static constexpr const char* stems[] = {"n", "len", "area", "mass", "time"};
        return std::string(stems[static_cast<int>(theme)]) + std::to_string(++m_names);
    }

    bool unique(const std::string& text) { return m_seen.insert(text).second; }

    // One line of the theme; false when it repeats an earlier one and must be drawn again.
    bool line(Theme theme, std::vector<std::string>& names, CorpusLine& out, Term& term) {
        const std::string a = number();
        const std::string b = number();
        const std::string c = number();
        const std::uint32_t shape = pick(6);
        std::string lumo, qalc, mathjs, sumQalc, sumMathjs;
        // Names defined in this block and still free to be used.
        const bool canUse = !names.empty();
        const std::string used = canUse ? names[pick(static_cast<std::uint32_t>(names.size()))] : "";
        switch (theme) {
        case Theme::plain:
            if (shape == 0) {
                lumo = a + " × " + b + " + " + c;
                qalc = mathjs = a + " * " + b + " + " + c;
            } else if (shape == 1) {
                lumo = qalc = mathjs = "(" + a + " + " + b + ") / " + c;
            } else if (shape == 2) {
                lumo = a + " ÷ " + b + " − " + c;
                qalc = mathjs = a + " / " + b + " - " + c;
            } else if (shape == 3 && canUse) {
                lumo = used + " × " + a;
                qalc = mathjs = used + " * " + a;
            } else {
                lumo = qalc = mathjs = a + " * " + b + " - " + c;
            }
            break;
        case Theme::length:
            if (shape == 0) {
                lumo = qalc = mathjs = a + " m + " + b + " cm";
            } else if (shape == 1) {
                lumo = a + " km in m";
                qalc = mathjs = a + " km to m";
                sumQalc = sumMathjs = a + " km";
            } else if (shape == 2) {
                lumo = a + " mm × " + b;
                qalc = mathjs = a + " mm * " + b;
            } else if (shape == 3 && canUse) {
                lumo = used + " + " + a + " mm";
                qalc = mathjs = used + " + " + a + " mm";
            } else {
                lumo = a + " cm in mm";
                qalc = mathjs = a + " cm to mm";
                sumQalc = sumMathjs = a + " cm";
            }
            break;
        case Theme::area:
            if (shape == 0 || shape == 1) {
                lumo = a + " mm × " + b + " mm";
                qalc = mathjs = a + " mm * " + b + " mm";
            } else if (shape == 2) {
                lumo = a + " m × " + b + " cm in m2";
                qalc = mathjs = a + " m * " + b + " cm to m^2";
                sumQalc = sumMathjs = a + " m * " + b + " cm";
            } else if (shape == 3 && canUse) {
                lumo = used + " × " + a;
                qalc = mathjs = used + " * " + a;
            } else {
                lumo = a + " cm × " + b + " cm";
                qalc = mathjs = a + " cm * " + b + " cm";
            }
            break;
        case Theme::mass:
            if (shape == 0) {
                lumo = qalc = mathjs = a + " kg + " + b + " g";
            } else if (shape == 1) {
                lumo = a + " g in kg";
                qalc = mathjs = a + " g to kg";
                sumQalc = sumMathjs = a + " g";
            } else if (shape == 3 && canUse) {
                lumo = used + " / " + a;
                qalc = mathjs = used + " / " + a;
            } else {
                lumo = a + " kg × " + b;
                qalc = mathjs = a + " kg * " + b;
            }
            break;
        case Theme::time:
            if (shape == 0) {
                lumo = qalc = a + " h + " + b + " min";
                mathjs = a + " hour + " + b + " minute";
            } else if (shape == 1) {
                lumo = a + " min in s";
                qalc = a + " min to s";
                mathjs = a + " minute to s";
                sumQalc = a + " min";
                sumMathjs = a + " minute";
            } else if (shape == 3 && canUse) {
                lumo = qalc = mathjs = used + " + " + a + " s";
            } else {
                lumo = a + " h × " + b;
                qalc = a + " h * " + b;
                mathjs = a + " hour * " + b;
            }
            break;
        }
        // One line in three defines a name, which later lines of the block may use.
        if (pick(3) == 0) {
            const std::string name = freshName(theme);
            out = {name + " = " + lumo, name + " := " + qalc, name + " = " + mathjs, name};
            names.push_back(name);
            term = {name, name};
            return unique(out.lumo);
        }
        out = {lumo, qalc, mathjs, {}};
        term = {sumQalc.empty() ? qalc : sumQalc, sumMathjs.empty() ? mathjs : sumMathjs};
        return unique(out.lumo);
    }

    void addBlock(std::vector<CorpusLine>& out, int count) {
        const auto theme = static_cast<Theme>(pick(5));
        const int size = 3 + static_cast<int>(pick(6));
        std::vector<std::string> names;
        std::string qalcSum, mathjsSum;
        for (int i = 0; i < size && static_cast<int>(out.size()) < count; ++i) {
            CorpusLine next;
            Term term;
            while (!line(theme, names, next, term)) {
            }
            qalcSum += (qalcSum.empty() ? "(" : " + (") + term.qalculate + ")";
            mathjsSum += (mathjsSum.empty() ? "(" : " + (") + term.mathjs + ")";
            out.push_back(std::move(next));
        }
        // The block's sum and the blank line that ends it; "sum" itself repeats, as in any sheet.
        if (static_cast<int>(out.size()) < count)
            out.push_back({"sum", qalcSum, mathjsSum, {}});
        if (static_cast<int>(out.size()) < count)
            out.push_back({});
    }

    std::mt19937 m_random;
    std::unordered_set<std::string> m_seen;
    int m_names = 0;
};

/// The corpus' Lumo lines as one sheet's text.
inline std::string uniqueSheet(int lines, std::uint32_t seed = CorpusGenerator::defaultSeed) {
    std::string text;
    for (const auto& line : CorpusGenerator(seed).lines(lines)) {
        text += line.lumo;
        text += '\n';
    }
    return text;
}

} // namespace lumo::bench
