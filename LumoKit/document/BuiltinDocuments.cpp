#include "LumoKit/document/BuiltinDocuments.h"

#include <string_view>

namespace lumo {

namespace {

// A text in both editions; the Japanese one comes first, as everywhere in the program.
struct Edition {
    std::string_view japanese;
    std::string_view english;

    std::string_view in(bool japaneseEdition) const { return japaneseEdition ? japanese : english; }
};

struct BuiltinSheet {
    std::string_view id; // empty: a fresh identifier at every build
    Edition name;
    Edition text;
};

// MARK: - Tutorial texts

// Every line below is calculated as the user sees it, so each example must evaluate.
// Line 3 of the first sheet gives an answer on purpose: the "#3" example reads it.

constexpr std::string_view gettingStartedJapanese =
    R"lumo(// ようこそ。ここは「打つと、その行の右に答えが出る」計算用紙です
// この行のように // で始めた行はメモになり、計算しません
100 + 20

// ■ 打ってみましょう
1500 + 2800
12 × 3.5
(120 + 80) / 4
2^10
// 行の終わりの = は付けても付けなくても同じです
1200 × 35 =

// ■ 演算子で始めると、上の行の続きを計算します
1200 × 35
+ 10%
× 2

// ■ 値に名前を付けると、どこでも使えます
単価 = 1200
個数 = 3
単価 × 個数

// ■ sum は、直前の空行から下の答えをまとめて合計します
1500
2800
700
sum

// ■ prev は 1 つ上の行の答え、#3 は 3 行目の答えです
250
prev × 4
// 3 行目はいちばん上の 100 + 20 です
#3 + 1000

// ■ [ ] の表や " " の文字も使えます
sum([1200, 800, 450])
"こんにちは、" + "世界"
// くわしくは「表・文字・グラフ」のシートで
)lumo";

constexpr std::string_view gettingStartedEnglish =
    R"lumo(// Welcome. Type an expression and the answer appears on the right.
// Lines beginning with // are notes and are not calculated.
100 + 20

// ■ Try typing
1500 + 2800
12 × 3.5
(120 + 80) / 4
2^10
// An = at the end of a line makes no difference
1200 × 35 =

// ■ Start a line with an operator to continue the line above
1200 × 35
+ 10%
× 2

// ■ Name a value and use it anywhere
price = 1200
quantity = 3
price × quantity

// ■ sum totals everything since the last blank line
1500
2800
700
sum

// ■ prev is the line above; #3 is the answer on line 3
250
prev × 4
// Line 3 is the 100 + 20 at the top
#3 + 1000

// ■ Lists in [ ] and text in " " work too
sum([1200, 800, 450])
"Hello, " + "world"
// There is more on the “Lists, Text & Graphs” sheet
)lumo";

constexpr std::string_view unitsJapanese = R"lumo(// 数のあとに単位を書くと、答えまで単位が付いてきます
82000円
120 mm × 3

// ■ 掛けたり割ったりすると、組み合わせの単位になります
幅 = 120 mm
奥行き = 300 mm
幅 × 奥行き
36 kN / (幅 × 奥行き)
150 km / 2 h
// 面積( ) は「くり返しと関数」のシートで def した関数です
面積(3 m, 4 m)

// ■ 単位を変換する
36 kN / (幅 × 奥行き) in N/mm2
5 km in m
100 km/h in m/s
1 坪 in m2
90 分 → 時間

// ■ 同じ種類の単位は足し算できます
2 時間 + 30 分
1 m + 20 cm
1.5 kg + 300 g
82000円 + 12400円

// ■ 打ち消し合った単位は消えます
100 km/h × 2 h
12 km / 3 km/h
6 m / 2 m
)lumo";

constexpr std::string_view unitsEnglish =
    R"lumo(// Write a unit after a number and it carries through to the answer
820 USD
120 mm × 3

// ■ Multiplying and dividing builds compound units
width = 120 mm
depth = 300 mm
width × depth
36 kN / (width × depth)
150 km / 2 h
// area( ) is a function made with def on the “Loops & Functions” sheet
area(3 m, 4 m)

// ■ Converting
36 kN / (width × depth) in N/mm2
5 km in m
100 km/h in m/s
1 acre in m2
90 min to h

// ■ Same kinds add up
2 h + 30 min
1 m + 20 cm
1.5 kg + 300 g
820 USD + 124 USD

// ■ Units that cancel out disappear
100 km/h × 2 h
12 km / 3 km/h
6 m / 2 m
)lumo";

constexpr std::string_view listsJapanese = R"lumo(// ■ [ ] に数を並べると表になります
価格 = [4800, 12000, 3200, 9600]
sum(価格)
avg(価格)

// ■ 1 つを取り出す（0 から数えます。-1 は最後）
価格[0]
価格[-1]

// ■ 並べ替えと数え上げ
sort(価格)
len(価格)
max(価格)

// ■ + は後ろにつなぎ、× はくり返します
価格 + [1500]
[0, 1] × 3

// ■ 引用符で囲むと文字になります
あいさつ = "こんにちは"
あいさつ + "、世界"
len(あいさつ)

// ■ str( ) で数を文字にすると、つなげられます
"合計は " + str(sum(価格))
"幅 " + str(120 mm)

// ■ 表や文字の行は、sum の合計に入りません
1200
[1, 2, 3]
"メモ"
300
sum

// ■ 表は棒グラフになります
chart(価格)

// ■ 式は曲線になります
plot(x^2 - 3x)

// ■ y も使うと、x・y・z の 3 つの軸で描きます
plot(x^2 - y^2)
)lumo";

constexpr std::string_view listsEnglish = R"lumo(// ■ Numbers in [ ] make a list
prices = [4800, 12000, 3200, 9600]
sum(prices)
avg(prices)

// ■ Pick an item (counting from 0; -1 is the last)
prices[0]
prices[-1]

// ■ Sorting and counting
sort(prices)
len(prices)
max(prices)

// ■ + joins on the end, × repeats
prices + [1500]
[0, 1] × 3

// ■ Quotes make text
greeting = "Hello"
greeting + ", world"
len(greeting)

// ■ str( ) turns a number into text so it can join
"The total is " + str(sum(prices))
"Width " + str(120 mm)

// ■ List and text lines stay out of the running sum
1200
[1, 2, 3]
"a note"
300
sum

// ■ A list becomes a bar chart
chart(prices)

// ■ An expression becomes a curve
plot(x^2 - 3x)

// ■ Use y as well and it is drawn on three axes: x, y and z
plot(x^2 - y^2)
)lumo";

constexpr std::string_view loopsJapanese =
    R"lumo(// 書き方は Python と同じです。行の終わりに : を付けて、次の行を字下げします
// ⏎ を押すと字下げは自動で入ります

// ■ もしも（if）
点数 = 72
if 点数 >= 60:
    結果 = "合格"
else:
    結果 = "もう一度"
結果

// ■ くり返す（for と while）
階乗 = 1
for i in range(1, 6):
    階乗 = 階乗 × i
階乗
n = 1
while n < 1000:
    n = n × 2
n

// ■ 自分の関数を作る（ほかのシートからも呼べます）
def 面積(幅, 奥行き):
    return 幅 × 奥行き
面積(3 m, 4 m)
def 税込(価格):
    return 価格 × 1.1
税込(1200)

// ■ 表を 1 つずつ取り出して、関数に通す
価格 = [4800, 12000, 3200]
税込価格 = []
for p in 価格:
    税込価格 = 税込価格 + [税込(p)]
税込価格
)lumo";

constexpr std::string_view loopsEnglish =
    R"lumo(// The syntax is Python's: end a line with : and indent the next line.
// Pressing ⏎ indents for you.

// ■ If
score = 72
if score >= 60:
    result = "pass"
else:
    result = "try again"
result

// ■ Repeat
factorial = 1
for i in range(1, 6):
    factorial = factorial × i
factorial
n = 1
while n < 1000:
    n = n × 2
n

// ■ Write your own function (callable from other sheets too)
def area(width, depth):
    return width × depth
area(3 m, 4 m)
def withTax(price):
    return price × 1.1
withTax(1200)

// ■ Take a list apart and run each item through it
prices = [4800, 12000, 3200]
taxed = []
for p in prices:
    taxed = taxed + [withTax(p)]
taxed
)lumo";

constexpr BuiltinSheet tutorial[] = {
    {"", {"はじめてのシート", "Getting Started"}, {gettingStartedJapanese, gettingStartedEnglish}},
    {"", {"単位", "Units"}, {unitsJapanese, unitsEnglish}},
    {"", {"表・文字・グラフ", "Lists, Text & Graphs"}, {listsJapanese, listsEnglish}},
    {"", {"くり返しと関数", "Loops & Functions"}, {loopsJapanese, loopsEnglish}},
};

// MARK: - Sample texts

constexpr std::string_view sampleIntroJapanese = "// 打つとすぐ右に答えが出ます\n"
                                                 "1200 × 35\n"
                                                 "+ 10%\n"
                                                 "\n"
                                                 "// 名前と単位は、そのまま計算に使えます\n"
                                                 "梁幅 = 120 mm\n"
                                                 "梁せい = 300 mm\n"
                                                 "断面積 = 梁幅 × 梁せい\n"
                                                 "36 kN / 断面積 in N/mm2\n"
                                                 "\n"
                                                 "// 時間や速さも混ぜられます\n"
                                                 "2 h + 30 min\n"
                                                 "100 km/h × 2 h\n"
                                                 "\n"
                                                 "// 表にして、まとめて集計もできます\n"
                                                 "価格 = [4800, 12000, 3200]\n"
                                                 "sum(価格)\n";

constexpr std::string_view sampleIntroEnglish = "// Type, and the answer appears on the right\n"
                                                "1200 × 35\n"
                                                "+ 10%\n"
                                                "\n"
                                                "// Names and units work in your calculations\n"
                                                "width = 120 mm\n"
                                                "depth = 300 mm\n"
                                                "area = width × depth\n"
                                                "36 kN / area in N/mm2\n"
                                                "\n"
                                                "// Mix time and speed freely\n"
                                                "2 h + 30 min\n"
                                                "100 km/h × 2 h\n"
                                                "\n"
                                                "// Put numbers in a list and add them up\n"
                                                "prices = [4800, 12000, 3200]\n"
                                                "sum(prices)\n";

// The forty numbers 100, 200, … 4000, one per line: a sheet long enough to scroll.
constexpr std::string_view longSheetText = "100\n200\n300\n400\n500\n600\n700\n800\n900\n1000\n"
                                           "1100\n1200\n1300\n1400\n1500\n1600\n1700\n1800\n1900\n2000\n"
                                           "2100\n2200\n2300\n2400\n2500\n2600\n2700\n2800\n2900\n3000\n"
                                           "3100\n3200\n3300\n3400\n3500\n3600\n3700\n3800\n3900\n4000\n";

constexpr BuiltinSheet sample[] = {
    {"11111111-1111-1111-1111-111111111111",
     {"はじめてのシート", "Getting Started"},
     {sampleIntroJapanese, sampleIntroEnglish}},
    {"22222222-2222-2222-2222-222222222222",
     {"家計", "Monthly Budget"},
     {"家賃 = 82000円\n光熱費 = 12400円\n家賃 + 光熱費\n",
      "rent = 820 USD\nutilities = 124 USD\nrent + utilities\n"}},
    {"33333333-3333-3333-3333-333333333333",
     {"旅行の見積もり", "Trip Estimate"},
     {"交通費 = 34000円\n宿 = 18000円\n交通費 + 宿\n",
      "flights = 340 USD\nhotel = 180 USD\nflights + hotel\n"}},
    {"44444444-4444-4444-4444-444444444444",
     {"グラフ", "Graphs"},
     {"// 式を書くと、その場で曲線になります\nplot(x^2 - 3x)\n\n// 表はそのまま棒グラフにできます\n売上 = "
      "[420, 610, 380, "
      "540]\nchart(売上)\n",
      "// Write an expression and it becomes a curve\nplot(x^2 - 3x)\n\n// A list turns straight into "
      "bars\nsales = "
      "[420, 610, 380, 540]\nchart(sales)\n"}},
    {"55555555-5555-5555-5555-555555555555", {"長いシート", "Long Sheet"}, {longSheetText, longSheetText}},
};

// MARK: - Building

template <std::size_t count>
std::vector<Sheet> buildSheets(const BuiltinSheet (&sheets)[count], bool japaneseEdition, Timestamp now) {
    std::vector<Sheet> built;
    built.reserve(count);
    for (const BuiltinSheet& sheet : sheets) {
        const Uuid id = sheet.id.empty() ? Uuid::random() : *Uuid::fromString(sheet.id);
        built.push_back(Sheet{id,
                              std::string(sheet.name.in(japaneseEdition)),
                              std::string(sheet.text.in(japaneseEdition)),
                              now,
                              {}});
    }
    return built;
}

LumoDocument documentOf(std::vector<Sheet> sheets) {
    LumoDocument document;
    document.sheets = std::move(sheets);
    if (!document.sheets.empty())
        document.selectedSheetID = document.sheets.front().id;
    return document;
}

} // namespace

std::vector<Sheet> tutorialSheets(AppLanguage language, Timestamp now) {
    return buildSheets(tutorial, L10n::resolvesToJapanese(language), now);
}

LumoDocument starterDocument(Timestamp now) {
    return documentOf(tutorialSheets(L10n::current(), now));
}

LumoDocument sampleDocument(Timestamp now) {
    return documentOf(buildSheets(sample, L10n::resolvesToJapanese(L10n::current()), now));
}

} // namespace lumo
