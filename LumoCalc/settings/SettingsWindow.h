#pragma once

#include <QFileDialog>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <utility>
#include <vector>

#include "LumoCalc/text/Bilingual.h"

class QCheckBox;
class QComboBox;

class QFormLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QTabWidget;

namespace lumo {

class AppSettings;
class NotificationCenter;
class SyntaxColorsPage;

/// The one settings window of the application: a control for every preference, each written
/// to the settings the moment it changes, so every window follows at once. It also follows
/// changes made elsewhere (zooming, dragging the answer column, the language chosen on the
/// terms of use) and relabels itself when the language changes.
///
/// Erasing everything is only asked for here; the owner confirms and does it.
class SettingsWindow : public QWidget {
    Q_OBJECT

public:
    SettingsWindow(AppSettings* settings, NotificationCenter* notifications, QWidget* parent = nullptr);

    QTabWidget* pages() const { return m_pages; }
    SyntaxColorsPage* colorsPage() const { return m_colors; }
    /// The folder chooser while it is open.
    QFileDialog* folderDialog() const { return m_folderDialog; }

signals:
    void eraseAllContentRequested();

private:
    QWidget* buildGeneralPage();
    QWidget* buildDisplayPage();
    QWidget* buildSyncPage();

    /// A combo box of an enumeration's cases on a form row.
    template <typename Enum>
    QComboBox* addChoice(QFormLayout* form, const char* name, Bilingual label,
                         std::vector<std::pair<Enum, Bilingual>> choices, std::function<Enum()> current,
                         std::function<void(Enum)> apply);
    QCheckBox* addCheck(QFormLayout* form, const char* name, Bilingual label, Bilingual text,
                        std::function<bool()> current, std::function<void(bool)> apply);
    QLabel* addRow(QFormLayout* form, Bilingual label, QWidget* field);
    QLabel* addNote(QWidget* parent, Bilingual text);
    void relabel(QWidget* widget, Bilingual text);

    void retranslate();
    void refresh();
    void chooseCloudFolder();

    QPointer<AppSettings> m_settings;
    QTabWidget* m_pages = nullptr;
    SyntaxColorsPage* m_colors = nullptr;
    QLineEdit* m_cloudFolder = nullptr;
    QPushButton* m_stopSyncing = nullptr;
    QPointer<QFileDialog> m_folderDialog;
    // Run on every language change and on every change of a setting.
    std::vector<std::function<void()>> m_relabels;
    std::vector<std::function<void()>> m_refreshes;
};

} // namespace lumo
