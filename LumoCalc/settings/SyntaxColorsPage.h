#pragma once

#include <QColorDialog>
#include <QPointer>
#include <QWidget>

#include <array>
#include <vector>

#include "LumoKit/editing/SyntaxHighlighter.h"
#include "LumoUI/settings/Theme.h"

class QLabel;
class QPlainTextEdit;
class QPushButton;
class QToolButton;

namespace lumo {

class AppSettings;
class SheetHighlighter;

/// The syntax colours, light and dark side by side in the order of the kinds: a swatch per
/// colour that opens a colour chooser, a reset per colour and one for all of them, and a
/// line of sheet text in either appearance that shows every kind as it will look.
///
/// A chosen colour is stored as its hex text; a reset removes the stored entry, so the
/// theme's colour applies again.
class SyntaxColorsPage : public QWidget {
    Q_OBJECT

public:
    explicit SyntaxColorsPage(AppSettings* settings, QWidget* parent = nullptr);

    QPushButton* swatch(SyntaxKind kind, Appearance appearance) const;
    QToolButton* resetButton(SyntaxKind kind, Appearance appearance) const;
    QPushButton* resetAllButton() const { return m_resetAll; }
    QPlainTextEdit* preview(Appearance appearance) const;
    /// The colour chooser while it is open.
    QColorDialog* colorDialog() const { return m_dialog; }

    /// The line the previews show; it holds a piece of every kind.
    static QString previewText();

    void retranslate();

private:
    struct Entry {
        SyntaxKind kind;
        Appearance appearance;
        QPushButton* swatch;
        QToolButton* reset;
    };

    const Entry& entry(SyntaxKind kind, Appearance appearance) const;
    void refresh();
    void choose(SyntaxKind kind, Appearance appearance);
    void store(SyntaxKind kind, Appearance appearance, const QString* hex);
    QPlainTextEdit* makePreview(Appearance appearance);

    QPointer<AppSettings> m_settings;
    std::vector<Entry> m_entries;
    std::vector<QLabel*> m_titles;
    QLabel* m_lightHeading = nullptr;
    QLabel* m_darkHeading = nullptr;
    QLabel* m_previewHeading = nullptr;
    QPushButton* m_resetAll = nullptr;
    std::array<QPlainTextEdit*, 2> m_previews{};
    std::array<SheetHighlighter*, 2> m_highlighters{};
    QPointer<QColorDialog> m_dialog;
};

} // namespace lumo
