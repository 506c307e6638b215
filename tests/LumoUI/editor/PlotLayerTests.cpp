#include <QClipboard>
#include <QMenu>
#include <QSignalSpy>
#include <QTemporaryDir>

#include "EditorFixture.h"
#include "LumoUI/editor/DecorationOverlay.h"
#include "LumoUI/editor/PlotLayer.h"

using namespace lumo;
using namespace lumo::test;

namespace {

class PlotLayerTest : public EditorFixture {
protected:
    // Tall enough for two plots and the lines around them, so nothing scrolls.
    void SetUp() override {
        EditorFixture::SetUp();
        editor->resize(900, 1000);
        QApplication::processEvents();
    }

    /// The top of a line's first row, where the caret at its start is drawn.
    int rowTop(int line) const {
        return view->cursorRect(QTextCursor(view->document()->findBlockByNumber(line))).top();
    }

    QRectF card(int line) const { return view->plots()->cardRect(line); }

    void send(QEvent::Type type, QPointF at, Qt::MouseButton button, Qt::MouseButtons buttons) {
        QMouseEvent event(type, at, view->viewport()->mapToGlobal(at), button, buttons, {});
        QApplication::sendEvent(view->viewport(), &event);
    }

    void drag(QPointF from, QPointF to) {
        send(QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton);
        send(QEvent::MouseMove, (from + to) / 2, Qt::NoButton, Qt::LeftButton);
        send(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton);
        send(QEvent::MouseButtonRelease, to, Qt::LeftButton, Qt::NoButton);
    }

    void repaint() {
        view->viewport()->repaint();
        QApplication::processEvents();
    }
};

TEST_F(PlotLayerTest, BandsMoveTheLinesBelowAndAnswersStayBesideTheirLines) {
    typeLines({"1 + 1", "plot(x^2 - 3x)", "2 + 2", "chart(3, -1, 4)", "price = 1200"});
    const qreal band = view->bandHeight(1);
    ASSERT_GT(band, 8 * view->fontMetrics().lineSpacing());
    EXPECT_EQ(view->bandHeight(3), band);
    for (int line : {0, 2, 4})
        EXPECT_EQ(view->bandHeight(line), 0) << line;

    // Each plot pushes what follows down by its band, and nothing else does.
    const int step = rowTop(1) - rowTop(0);
    EXPECT_NEAR(rowTop(2) - rowTop(1), step + band, 1);
    EXPECT_NEAR(rowTop(4) - rowTop(3), step + band, 1);
    // The plot's card lies between its line and the next one.
    EXPECT_GE(card(1).top(), rowTop(1) + step - 1);
    EXPECT_LE(card(1).bottom(), rowTop(2));
    EXPECT_EQ(view->plots()->plotBoxes().size(), 2u);

    // Answers below the plots sit on their lines, and the pointer finds them there.
    for (int line : {2, 4}) {
        const QRectF answer = view->answerRect(line);
        ASSERT_FALSE(answer.isEmpty()) << line;
        EXPECT_NEAR(answer.center().y(),
                    view->cursorRect(QTextCursor(view->document()->findBlockByNumber(line))).center().y(), 2);
        EXPECT_EQ(view->answerLineAt(answer.center()), line);
    }
    caretToLineEnd(4);
    typeText(" + ");
    QSignalSpy clicked(view, &CalcTextView::answerClicked);
    QTest::mouseClick(view->overlay(), Qt::LeftButton, {}, answerPoint(2));
    ASSERT_EQ(clicked.size(), 1);
    EXPECT_EQ(clicked.front().front().toInt(), 2);
    // The band beside a plot holds no answer of its own.
    EXPECT_FALSE(view->answerLineAt(QPointF(view->answerRect(2).center().x(), card(1).center().y())));
}

TEST_F(PlotLayerTest, HidingPlotsRemovesEveryBand) {
    typeLines({"plot(x^2)", "chart(1, 2)", "5"});
    const int withPlots = rowTop(2) - rowTop(0);
    ASSERT_GT(view->bandHeight(0), 0);

    settings->setViewPreference(QStringLiteral("lumo.showGraph"), false);
    for (int line : {0, 1, 2})
        EXPECT_EQ(view->bandHeight(line), 0) << line;
    EXPECT_NEAR(rowTop(2) - rowTop(0), 2 * (rowTop(1) - rowTop(0)), 1);
    EXPECT_LT(rowTop(2) - rowTop(0), withPlots);

    settings->setViewPreference(QStringLiteral("lumo.showGraph"), true);
    EXPECT_EQ(rowTop(2) - rowTop(0), withPlots);
}

TEST_F(PlotLayerTest, DraggingSidewaysTurnsASurfaceAndTheTurnStays) {
    typeLines({"plot(x * y)", "plot(x^2)"});
    PlotLayer* plots = view->plots();
    const QString title = QStringLiteral("plot(x * y)");
    const double before = plots->surfaceAngle(title);
    const int caret = view->textCursor().position();

    const QPointF middle = card(0).center();
    drag(middle, middle + QPointF(50, 12));
    EXPECT_NEAR(plots->surfaceAngle(title), before + 50 * PlotLayer::degreesPerPixel, 1e-9);
    EXPECT_FALSE(plots->rotating());
    EXPECT_EQ(view->textCursor().position(), caret) << "a drag on a plot leaves the caret alone";
    EXPECT_FALSE(view->textCursor().hasSelection());

    // While the drag is under way, the view knows which plot turns and from where.
    send(QEvent::MouseButtonPress, middle, Qt::LeftButton, Qt::LeftButton);
    ASSERT_TRUE(plots->rotating());
    EXPECT_EQ(plots->rotating()->title, title);
    send(QEvent::MouseMove, middle - QPointF(30, 0), Qt::NoButton, Qt::LeftButton);
    send(QEvent::MouseButtonRelease, middle - QPointF(30, 0), Qt::LeftButton, Qt::NoButton);
    const double turned = before + 20 * PlotLayer::degreesPerPixel;
    EXPECT_NEAR(plots->surfaceAngle(title), turned, 1e-9);

    // New answers keep the turn; a curve does not turn.
    caretToLineEnd(1);
    typeText(" + 1");
    EXPECT_NEAR(plots->surfaceAngle(title), turned, 1e-9);
    drag(card(1).center(), card(1).center() + QPointF(60, 0));
    EXPECT_NEAR(plots->surfaceAngle(QStringLiteral("plot(x^2 + 1)")), PlotView::defaultSurfaceAngle, 1e-9);
}

TEST_F(PlotLayerTest, HoveringACurveReadsOutThePointUnderThePointer) {
    typeLines({"plot(x^2, 0, 4)", "1 + 1"});
    const QRectF plot = card(0);
    // Across the card from left to right, the read-out's x grows with the pointer's.
    double lastX = -1;
    for (qreal share : {0.3, 0.5, 0.8}) {
        send(QEvent::MouseMove, QPointF(plot.left() + plot.width() * share, plot.center().y()), Qt::NoButton,
             Qt::NoButton);
        const auto hovered = view->plots()->hoveredPoint();
        ASSERT_TRUE(hovered) << share;
        EXPECT_EQ(hovered->first, 0);
        EXPECT_GT(hovered->second.x, lastX);
        EXPECT_NEAR(hovered->second.y, hovered->second.x * hovered->second.x, 1e-9);
        lastX = hovered->second.x;
    }
    EXPECT_EQ(view->viewport()->cursor().shape(), Qt::ArrowCursor);
    // Leaving the plot for the text ends the read-out and brings the text cursor back.
    send(QEvent::MouseMove, QPointF(plot.center().x(), rowTop(1) + 4), Qt::NoButton, Qt::NoButton);
    EXPECT_FALSE(view->plots()->hoveredPoint());
    EXPECT_EQ(view->viewport()->cursor().shape(), Qt::IBeamCursor);
}

TEST_F(PlotLayerTest, PlotsAreDrawnAgainOnlyWhenTheyChange) {
    typeLines({"a = 2", "plot(a * x)", "chart(1, 2, 3)", "5"});
    repaint();
    const int drawn = view->plots()->drawCount();
    ASSERT_GE(drawn, 2);

    // Typing elsewhere brings new results with equal plots: nothing is drawn again.
    caretToLineEnd(3);
    typeText(" + 1");
    repaint();
    EXPECT_EQ(view->plots()->drawCount(), drawn);

    // A plot whose description changes is drawn again, and only that one.
    caretToLineEnd(0);
    typeText("0");
    repaint();
    EXPECT_EQ(view->plots()->drawCount(), drawn + 1);

    // So is every plot when the width changes.
    editor->resize(editor->width() - 120, editor->height());
    repaint();
    EXPECT_EQ(view->plots()->drawCount(), drawn + 3);
}

TEST_F(PlotLayerTest, AFailedPlotShowsItsMessageLikeAnyAnswer) {
    typeLines({"plot(x^2, 3)", "chart()"});
    for (int line : {0, 1}) {
        EXPECT_EQ(view->bandHeight(line), 0) << line;
        ASSERT_TRUE(view->answer(line)) << line;
        EXPECT_TRUE(view->answer(line)->isFailure());
    }
    EXPECT_EQ(view->answer(0)->text, QStringLiteral("Give both ends of the range: plot(expr, left, right)"));
}

TEST_F(PlotLayerTest, TheMenuOfAPlotCopiesAndSavesItsImage) {
    typeLines({"chart(3, 1, 4)"});
    struct Case {
        AppLanguage language;
        QStringList labels;
    };
    const Case cases[] = {
        {AppLanguage::english, {"Copy Image", "Save Image…"}},
        {AppLanguage::japanese, {"画像をコピー", "画像を保存…"}},
    };
    for (const Case& test : cases) {
        settings->setLanguage(test.language);
        rightClick(view->viewport(), card(0).center().toPoint());
        QMenu* menu = openMenu(view);
        ASSERT_TRUE(menu);
        EXPECT_EQ(menuLabels(menu), test.labels);
        menu->close();
        QApplication::processEvents();
    }

    QApplication::clipboard()->clear();
    view->plots()->copyPlotImage(0);
    const QImage copied = QApplication::clipboard()->image();
    EXPECT_EQ(copied.size(), card(0).size().toSize() * 2);

    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("plot.png"));
    ASSERT_TRUE(view->plots()->savePlotImage(0, path));
    const QImage saved(path);
    EXPECT_EQ(saved.size(), copied.size());
}

} // namespace
