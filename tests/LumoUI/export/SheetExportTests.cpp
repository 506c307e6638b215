#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <memory>

#include "LumoKit/document/BuiltinDocuments.h"
#include "LumoUI/export/SheetExport.h"
#include "LumoUI/export/SheetPrinter.h"
#include "support/QtTestSupport.h"

namespace lumo {
namespace {

const auto* const environment =
    ::testing::AddGlobalTestEnvironment(new lumo::test::GuiEnvironment("SheetExportTests"));

struct Edition {
    AppLanguage language;
    const char* code;
};
constexpr Edition editions[] = {{AppLanguage::japanese, "ja"}, {AppLanguage::english, "en"}};

EvaluationOptions optionsFor(AppLanguage language) {
    EvaluationOptions options;
    options.language = language == AppLanguage::english ? Language::english : Language::japanese;
    return options;
}

// A sheet of the sample document in an edition, evaluated as the application evaluates it.
EvaluatedSheet sampleSheet(AppLanguage language, std::size_t index) {
    L10n::setCurrent(language);
    const LumoDocument document = sampleDocument(Timestamp{});
    return evaluateSheet(document, document.sheets.at(index).id, optionsFor(language));
}

PrintLook look() {
    PrintLook look;
    look.fontFamily = QStringLiteral("DejaVu Sans Mono");
    return look;
}

QByteArray contentsOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The text of a PDF, page by page, as pdftotext reads it; empty when the tool is missing.
std::optional<QStringList> pdfPages(const QString& path) {
    const QString tool = QStandardPaths::findExecutable(QStringLiteral("pdftotext"));
    if (tool.isEmpty())
        return std::nullopt;
    QProcess process;
    process.start(tool, {QStringLiteral("-layout"), QStringLiteral("-enc"), QStringLiteral("UTF-8"), path,
                         QStringLiteral("-")});
    process.waitForFinished(30000);
    QStringList pages = QString::fromUtf8(process.readAllStandardOutput()).split(QLatin1Char('\f'));
    if (!pages.isEmpty() && pages.last().trimmed().isEmpty())
        pages.removeLast();
    return pages;
}

// The exports of the sample's sheets, recorded once in tests/export. Set LUMO_RECORD_EXPORTS
// to write the recordings anew after a deliberate change.
TEST(SheetExport, SampleSheetsMatchTheirRecordings) {
    struct Sheet {
        std::size_t index;
        const char* stem;
    };
    const Sheet sheets[] = {{0, "getting-started"}, {3, "graphs"}};
    const ExportFormat formats[] = {ExportFormat::text, ExportFormat::markdown, ExportFormat::csv};
    const QDir recordings(QStringLiteral(LUMO_TEST_DATA_DIR "/export"));
    const bool recording = qEnvironmentVariableIsSet("LUMO_RECORD_EXPORTS");
    QTemporaryDir folder;
    for (const Edition& edition : editions) {
        for (const Sheet& sheet : sheets) {
            const EvaluatedSheet evaluated = sampleSheet(edition.language, sheet.index);
            for (ExportFormat format : formats) {
                const QString name =
                    QStringLiteral("%1-%2.%3")
                        .arg(QLatin1String(sheet.stem), QLatin1String(edition.code), suffixOf(format));
                const QString path = folder.filePath(name);
                ASSERT_EQ(exportSheet(evaluated, format, path, optionsFor(edition.language), look()),
                          QString());
                if (recording)
                    QFile::copy(path, recordings.filePath(name));
                EXPECT_EQ(contentsOf(path).toStdString(), contentsOf(recordings.filePath(name)).toStdString())
                    << name.toStdString();
            }
        }
    }
    // The Markdown of the graphs links one image per plot, written beside it.
    for (const char* image : {"graphs-en-2.png", "graphs-en-6.png", "graphs-ja-2.png", "graphs-ja-6.png"}) {
        const QImage plot(folder.filePath(QLatin1String(image)));
        EXPECT_EQ(plot.size(), QSize(1280, 640)) << image;
    }
    EXPECT_FALSE(QFile::exists(folder.filePath(QStringLiteral("graphs-en-5.png"))))
        << "a list line has no image";
}

TEST(SheetExport, UnwritablePlaceIsReported) {
    const EvaluatedSheet sheet = sampleSheet(AppLanguage::english, 1);
    for (ExportFormat format : allExportFormats()) {
        const QString error =
            exportSheet(sheet, format, QStringLiteral("/nonexistent/folder/budget.") + suffixOf(format),
                        optionsFor(AppLanguage::english), look());
        EXPECT_TRUE(error.contains(QStringLiteral("budget"))) << error.toStdString();
    }
}

TEST(SheetPrinter, BlocksAreNeverCutByAPage) {
    struct Case {
        std::vector<qreal> heights;
        std::vector<BlockPlacement> expected;
    };
    const Case cases[] = {
        {{40, 40, 20}, {{0, 0}, {0, 40}, {0, 80}}},
        {{40, 40, 30}, {{0, 0}, {0, 40}, {1, 0}}},
        {{150, 10}, {{0, 0}, {1, 0}}},
        {{10, 150, 10}, {{0, 0}, {1, 0}, {2, 0}}},
        {{}, {}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(placeBlocks(c.heights, 100), c.expected);
}

// Five plots of which two fit on a page: the third starts a page rather than being cut.
TEST(SheetPrinter, PdfPagesKeepEachPlotWhole) {
    QString text;
    for (int power = 1; power <= 5; ++power)
        text += QStringLiteral("plot(x^%1)\n").arg(power);
    L10n::setCurrent(AppLanguage::english);
    Sheet sheet{Uuid::random(), "Powers", text.toStdString(), {}, {}};
    const LumoDocument document{{sheet}, {}, {}, {}, {}, {}};
    const EvaluatedSheet evaluated = evaluateSheet(document, sheet.id, optionsFor(AppLanguage::english));

    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("powers.pdf"));
    ASSERT_EQ(exportSheet(evaluated, ExportFormat::pdf, path, optionsFor(AppLanguage::english), look()),
              QString());
    const std::optional<QStringList> pages = pdfPages(path);
    if (!pages)
        GTEST_SKIP() << "pdftotext (poppler-utils) is not installed";
    ASSERT_EQ(pages->size(), 3) << pages->join(QStringLiteral("\n----\n")).toStdString();
    const std::vector<std::vector<int>> onPage = {{1, 2}, {3, 4}, {5}};
    for (int page = 0; page < 3; ++page) {
        const QString& shown = pages->at(page);
        EXPECT_TRUE(shown.contains(QStringLiteral("Powers"))) << "the sheet's name heads page " << page + 1;
        EXPECT_TRUE(shown.contains(QStringLiteral("%1 / 3").arg(page + 1)));
        for (int power = 1; power <= 5; ++power) {
            const bool expected =
                std::find(onPage[std::size_t(page)].begin(), onPage[std::size_t(page)].end(), power) !=
                onPage[std::size_t(page)].end();
            EXPECT_EQ(shown.contains(QStringLiteral("plot(x^%1)").arg(power)), expected)
                << "plot " << power << " on page " << page + 1;
        }
    }
}

TEST(SheetPrinter, PdfTextOfTheSampleInBothLanguages) {
    struct Case {
        AppLanguage language;
        std::size_t sheet;
        int pages;
        QStringList texts;
    };
    const Case cases[] = {
        {AppLanguage::english,
         0,
         1,
         {"Getting Started", "1200 × 35", "42,000", "36 kN / area in N/mm2", "1 N/mm²"}},
        {AppLanguage::japanese, 1, 1, {"家計", "家賃 = 82000円", "94,400円"}},
    };
    QTemporaryDir folder;
    for (const Case& c : cases) {
        const QString path = folder.filePath(QStringLiteral("sample.pdf"));
        ASSERT_EQ(exportSheet(sampleSheet(c.language, c.sheet), ExportFormat::pdf, path,
                              optionsFor(c.language), look()),
                  QString());
        const std::optional<QStringList> pages = pdfPages(path);
        if (!pages)
            GTEST_SKIP() << "pdftotext (poppler-utils) is not installed";
        EXPECT_EQ(pages->size(), c.pages);
        const QString all = pages->join(QLatin1Char('\n'));
        for (const QString& text : c.texts)
            EXPECT_TRUE(all.contains(text)) << text.toStdString() << " in\n" << all.toStdString();
    }
}

} // namespace
} // namespace lumo
