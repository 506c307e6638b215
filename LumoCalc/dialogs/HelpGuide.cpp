#include "LumoCalc/dialogs/HelpGuide.h"

#include <QStringView>

#include <vector>

#include "LumoCalc/text/Bilingual.h"
#include "LumoCalc/window/Commands.h"
#include "LumoKit/document/BuiltinDocuments.h"
#include "LumoKit/language/Keywords.h"
#include "LumoKit/sheet/DocumentEvaluator.h"
#include "LumoKit/values/ValueFormatter.h"

namespace lumo {

namespace {

// The tutorial's notes, which the guide turns into headings and paragraphs.
const QLatin1String noteMarker(keywords::noteMarker.data(), qsizetype(keywords::noteMarker.size()));

struct HelpTopic {
    Bilingual heading;
    std::vector<Bilingual> points;
};

// The same short explanations that the tutorial and the editor's menus use, gathered where a
// reader looks for them.
// clang-format off
const HelpTopic helpTopics[] = {
    {{"答えと名前", "Answers and names"},
     {{"答えをクリックすると、カーソルの位置にその行の答えが入ります。名前がなければ自動で付きます",
       "Click an answer to use it at the caret; a name is added automatically if needed"},
      {"答えを右クリックして「名前を付ける…」を選ぶと、行の前に「名前 = 」が入ります",
       "Right-click an answer and choose Name This Line… to put “name = ” in front of the line"},
      {"「名前を変える…」では、その名前を使っている行もまとめて書き換わります",
       "Rename…: every line using the name is updated together"},
      {"ロックした行は変更できません。右クリックの「行をロック」で切り替えます",
       "A locked line can’t be changed; Lock Line in the right-click menu turns it on and off"},
      {"何行か選ぶと、ウインドウの下に答えの個数と合計、平均が出ます",
       "Select a few lines to see how many answers they hold, with their sum and average, at the bottom of the window"}}},
    {{"シートどうし", "Sheets together"},
     {{"def で作った関数だけがほかのシートから呼べます", "Only def is shared"},
      {"同じ名前の関数は、自分のシートが優先され、次にタブの順です", "Your own sheet wins, then sheets in tab order"},
      {"名前を付けた値（単価 = 1200 …）はそのシートの中だけで使えます",
       "Named values (price = 1200 …) stay within their sheet"}}},
    {{"くり返しの中の行", "Lines inside blocks"},
     {{"書き方は Python と同じです。行の終わりに : を付けて、次の行を字下げします",
       "The syntax is Python's: end a line with : and indent the next line."},
      {"最後に通ったときの答えを表示し、sum には入りません", "Show the last pass's answer; they stay out of sum"},
      {"くり返しは 200,000 回、呼び出しの深さは 40、計算は 0.15 秒までで止まるので、シートが固まることはありません",
       "Loops stop after 200,000 steps, calls 40 deep and 0.15 s, so no sheet can hang the editor"}}},
    {{"グラフ", "Graphs"},
     {{"曲線: plot(x^2)。y も使うと 3 つの軸", "Curve: plot(x^2). Uses y too → three axes"},
      {"chart(価格) で表を棒グラフに", "chart(prices) draws a list as bars"}}},
};
// clang-format on

// Every command that has a key, as the menus name it, with the key this platform binds.
QString shortcutTable() {
    QString html = QStringLiteral("<h2>%1</h2><table cellspacing=\"0\" cellpadding=\"2\">")
                       .arg(pickText("キー操作", "Keyboard shortcuts"));
    for (const CommandDefinition& definition : allCommands()) {
        const QList<QKeySequence> keys = shortcutsFor(definition);
        if (keys.isEmpty())
            continue;
        html += QStringLiteral("<tr><td>%1</td><td style=\"padding-left:24px\"><b>%2</b></td></tr>")
                    .arg(definition.label.text().toHtmlEscaped(),
                         keys.front().toString(QKeySequence::NativeText).toHtmlEscaped());
    }
    return html + QStringLiteral("</table>");
}

QString colourName(const QColor& colour) {
    return colour.name(QColor::HexRgb);
}

QString answerCell(const LineResult& result, const HelpGuide::Colours& colours) {
    const LineOutcome& outcome = result.outcome;
    switch (outcome.kind) {
    case LineOutcome::Kind::value:
        return QStringLiteral("<span style=\"color:%1\">%2</span>")
            .arg(colourName(colours.answer),
                 QString::fromStdString(
                     ValueFormatter::format(outcome.value, EvaluationOptions::current(), Grouping::grouped))
                     .toHtmlEscaped());
    case LineOutcome::Kind::failure:
        return QStringLiteral("<span style=\"color:%1\">%2</span>")
            .arg(colourName(colours.failure), QString::fromStdString(outcome.message()).toHtmlEscaped());
    case LineOutcome::Kind::plot:
        return QStringLiteral("<span style=\"color:%1\">%2</span>")
            .arg(colourName(colours.note), pickText("（グラフ）", "(graph)"));
    case LineOutcome::Kind::blank:
    case LineOutcome::Kind::comment:
        break;
    }
    return {};
}

// Turns one tutorial sheet into headings, paragraphs and example blocks.
class SheetWriter {
public:
    SheetWriter(HelpGuide& guide, const HelpGuide::Colours& colours) : m_guide(guide), m_colours(colours) {}

    void write(const QStringList& lines, const std::vector<LineResult>& results) {
        for (qsizetype index = 0; index < lines.size(); ++index) {
            const QString& line = lines[index];
            const QString trimmed = line.trimmed();
            if (trimmed.startsWith(noteMarker)) {
                finishExample();
                QString note = trimmed.mid(noteMarker.size()).trimmed();
                if (note.startsWith(QChar(0x25A0))) // ■ marks a topic of the sheet
                    m_guide.html += QStringLiteral("<h3>%1</h3>").arg(note.mid(1).trimmed().toHtmlEscaped());
                else if (!note.isEmpty())
                    m_guide.html += QStringLiteral("<p>%1</p>").arg(note.toHtmlEscaped());
            } else if (trimmed.isEmpty()) {
                finishExample();
            } else {
                const std::size_t at = std::size_t(index);
                m_rows.append({line, at < results.size() ? answerCell(results[at], m_colours) : QString()});
            }
        }
        finishExample();
    }

private:
    struct Row {
        QString code;
        QString answer;
    };

    void finishExample() {
        if (m_rows.isEmpty())
            return;
        QStringList code;
        QString table = QStringLiteral("<table width=\"100%\" cellspacing=\"0\" cellpadding=\"3\" "
                                       "style=\"background-color:%1\">")
                            .arg(colourName(m_colours.exampleBackground));
        for (const Row& row : m_rows) {
            code.append(row.code);
            QString shown = row.code.toHtmlEscaped();
            // Indentation is part of the language, so it must survive the rich-text layout.
            shown.replace(QLatin1Char(' '), QStringLiteral("&nbsp;"));
            table += QStringLiteral("<tr><td><code>%1</code></td><td align=\"right\">%2</td></tr>")
                         .arg(shown, row.answer);
        }
        table += QStringLiteral("</table>");
        const int index = int(m_guide.examples.size());
        m_guide.examples.append(code.join(QLatin1Char('\n')));
        m_guide.html += table;
        m_guide.html += QStringLiteral("<p align=\"right\" style=\"margin-top:2px; margin-bottom:12px\">"
                                       "<a href=\"%1\">%2</a></p>")
                            .arg(HelpGuide::copyLink(index), pickText("この例をコピー", "Copy this example"));
        m_rows.clear();
    }

    HelpGuide& m_guide;
    const HelpGuide::Colours& m_colours;
    QList<Row> m_rows;
};

} // namespace

HelpGuide HelpGuide::build(const Colours& colours) {
    HelpGuide guide;
    guide.html = QStringLiteral("<html><body style=\"color:%1\">").arg(colourName(colours.text));
    guide.html +=
        QStringLiteral("<h1>%1</h1><p>%2</p>")
            .arg(pickText("Lumo の使い方", "Using Lumo"),
                 pickText("シートに 1 行ずつ式を書くと、その行の右に答えが出ます。= はいりません。"
                          "下の例は、コピーしてシートに貼り付ければそのまま計算できます。",
                          "Write one calculation per line and its answer appears on the right; no = "
                          "is needed. Copy any example below and paste it into a sheet to try it."));

    const std::vector<Sheet> sheets = tutorialSheets(L10n::current(), Timestamp{0});
    for (const Sheet& sheet : sheets) {
        // Each sheet is evaluated beside the others, as in a document, so examples that call a
        // function from another sheet answer too.
        std::vector<SharedSheet> others;
        for (const Sheet& other : sheets) {
            if (other.id != sheet.id)
                others.push_back(SharedSheet{other.name, other.text});
        }
        const std::vector<LineResult> results =
            DocumentEvaluator::evaluate(sheet.text, others, EvaluationOptions::current());
        guide.html += QStringLiteral("<h2>%1</h2>").arg(QString::fromStdString(sheet.name).toHtmlEscaped());
        SheetWriter(guide, colours)
            .write(QString::fromStdString(sheet.text).split(QLatin1Char('\n')), results);
    }

    for (const HelpTopic& topic : helpTopics) {
        guide.html += QStringLiteral("<h2>%1</h2><ul>").arg(topic.heading.text().toHtmlEscaped());
        for (const Bilingual& point : topic.points)
            guide.html += QStringLiteral("<li>%1</li>").arg(point.text().toHtmlEscaped());
        guide.html += QStringLiteral("</ul>");
    }
    guide.html += shortcutTable();
    guide.html += QStringLiteral("</body></html>");
    return guide;
}

} // namespace lumo
