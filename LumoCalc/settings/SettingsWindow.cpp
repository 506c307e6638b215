#include "LumoCalc/settings/SettingsWindow.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>

#include "LumoCalc/settings/SyntaxColorsPage.h"
#include "LumoCalc/window/Commands.h"
#include "LumoUI/settings/AppSettings.h"
#include "LumoUI/settings/NotificationCenter.h"

namespace lumo {

namespace {

QFormLayout* makeForm(QWidget* page) {
    auto* form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    form->setHorizontalSpacing(14);
    form->setVerticalSpacing(10);
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(24, 20, 24, 20);
    column->addLayout(form);
    return form;
}

void endPage(QWidget* page) {
    static_cast<QVBoxLayout*>(page->layout())->addStretch(1);
}

} // namespace

SettingsWindow::SettingsWindow(AppSettings* settings, NotificationCenter* notifications, QWidget* parent)
    : QWidget(parent, Qt::Window), m_settings(settings) {
    setObjectName(QStringLiteral("settingsWindow"));

    m_pages = new QTabWidget(this);
    m_pages->setDocumentMode(true);
    m_pages->addTab(buildGeneralPage(), QString());
    m_pages->addTab(buildDisplayPage(), QString());
    m_colors = new SyntaxColorsPage(settings, m_pages);
    m_pages->addTab(m_colors, QString());
    m_pages->addTab(buildSyncPage(), QString());
    const std::vector<Bilingual> tabTitles{{"一般", "General"},
                                           {"表示", "Display"},
                                           {"文字の色", "Syntax Colours"},
                                           {"同期とデータ", "Sync && Data"}};
    m_relabels.push_back([this, tabTitles] {
        for (std::size_t index = 0; index < tabTitles.size(); ++index)
            m_pages->setTabText(int(index), tabTitles[index].text());
        setWindowTitle(pickText("設定", "Settings"));
    });

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 6, 0, 0);
    layout->addWidget(m_pages);

    auto* close = new QAction(this);
    close->setShortcuts({QKeySequence::Close, QKeySequence(Qt::Key_Escape)});
    connect(close, &QAction::triggered, this, &QWidget::close);
    addAction(close);
    // Ctrl+Tab moves between the pages wherever the focus is.
    for (const auto& [keys, step] : {std::pair{QKeySequence(Qt::CTRL | Qt::Key_Tab), 1},
                                     std::pair{QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Tab), -1}}) {
        auto* turn = new QAction(this);
        turn->setShortcut(keys);
        connect(turn, &QAction::triggered, this, [this, step = step] {
            m_pages->setCurrentIndex((m_pages->currentIndex() + step + m_pages->count()) % m_pages->count());
        });
        addAction(turn);
    }

    if (m_settings) {
        connect(m_settings, &AppSettings::appearanceChanged, this, &SettingsWindow::refresh);
        connect(m_settings, &AppSettings::textSizeChanged, this, &SettingsWindow::refresh);
        connect(m_settings, &AppSettings::keypadSizeChanged, this, &SettingsWindow::refresh);
        connect(m_settings, &AppSettings::maxFractionDigitsChanged, this, &SettingsWindow::refresh);
        connect(m_settings, &AppSettings::angleChanged, this, &SettingsWindow::refresh);
        connect(m_settings, &AppSettings::sheetListStyleChanged, this, &SettingsWindow::refresh);
        connect(m_settings, &AppSettings::showsNamedValuesChanged, this, &SettingsWindow::refresh);
        connect(m_settings, &AppSettings::keypadSideChanged, this, &SettingsWindow::refresh);
        connect(m_settings, &AppSettings::groupsDigitsChanged, this, &SettingsWindow::refresh);
        connect(m_settings, &AppSettings::languageChanged, this, &SettingsWindow::refresh);
    }
    if (notifications) {
        notifications->observe(notification::resultWidthChanged, this, [this] { refresh(); });
        notifications->observe(notification::languageChanged, this, [this] { retranslate(); });
    }
    retranslate();
    refresh();
    resize(sizeHint().expandedTo(QSize(640, 560)));
}

// MARK: - Pages

QWidget* SettingsWindow::buildGeneralPage() {
    auto* page = new QWidget;
    QFormLayout* form = makeForm(page);
    addChoice<AppLanguage>(
        form, "language", {"言語(&L):", "&Language:"},
        {{AppLanguage::system, {"システムに合わせる", "System"}},
         {AppLanguage::japanese, {"日本語", "日本語"}},
         {AppLanguage::english, {"English", "English"}}},
        [this] { return m_settings->language(); },
        [this](AppLanguage value) { m_settings->setLanguage(value); });
    addChoice<AngleSetting>(
        form, "angle", {"角度(&A):", "&Angles:"},
        {{AngleSetting::degrees, {"度（°）", "Degrees (°)"}},
         {AngleSetting::radians, {"ラジアン", "Radians"}}},
        [this] { return m_settings->angle(); }, [this](AngleSetting value) { m_settings->setAngle(value); });

    auto* digits = new QSpinBox(page);
    digits->setObjectName(QStringLiteral("maxFractionDigits"));
    digits->setRange(0, 15);
    digits->setAccelerated(true);
    connect(digits, &QSpinBox::valueChanged, this, [this](int value) {
        if (m_settings)
            m_settings->setMaxFractionDigits(value);
    });
    m_refreshes.push_back([this, digits] {
        const QSignalBlocker quiet(digits);
        digits->setValue(m_settings->maxFractionDigits());
    });
    addRow(form, {"小数の最大桁数(&D):", "Maximum &decimal places:"}, digits);

    addCheck(
        form, "groupsDigits", {"桁区切り:", "Digit grouping:"},
        {"3 桁ごとに区切る（1,234,567）(&G)", "&Group digits in threes (1,234,567)"},
        [this] { return m_settings->groupsDigits(); },
        [this](bool value) { m_settings->setGroupsDigits(value); });
    endPage(page);
    return page;
}

QWidget* SettingsWindow::buildDisplayPage() {
    auto* page = new QWidget;
    QFormLayout* form = makeForm(page);
    addChoice<AppearanceSetting>(
        form, "appearance", {"外観(&A):", "&Appearance:"},
        {{AppearanceSetting::automatic, {"自動（デスクトップに合わせる）", "Automatic (follow the desktop)"}},
         {AppearanceSetting::light, {"ライト", "Light"}},
         {AppearanceSetting::dark, {"ダーク", "Dark"}}},
        [this] { return m_settings->appearance(); },
        [this](AppearanceSetting value) { m_settings->setAppearance(value); });
    addChoice<TextSizeSetting>(
        form, "textSize", {"文字の大きさ(&T):", "&Text size:"},
        {{TextSizeSetting::small, {"小", "Small"}},
         {TextSizeSetting::standard, {"標準", "Standard"}},
         {TextSizeSetting::large, {"大", "Large"}},
         {TextSizeSetting::xlarge, {"特大", "Extra Large"}}},
        [this] { return m_settings->textSize(); },
        [this](TextSizeSetting value) { m_settings->setTextSize(value); });

    auto* width = new QDoubleSpinBox(page);
    width->setObjectName(QStringLiteral("resultColumnWidth"));
    width->setRange(AppSettings::minResultColumnWidth, AppSettings::maxResultColumnWidth);
    width->setDecimals(0);
    width->setSingleStep(10);
    width->setAccelerated(true);
    // Typing "300" must not pass through 3 and 30 on its way.
    width->setKeyboardTracking(false);
    connect(width, &QDoubleSpinBox::valueChanged, this, [this](double value) {
        if (m_settings && value != m_settings->resultColumnWidth())
            m_settings->setResultColumnWidth(value);
    });
    width->setSuffix(QStringLiteral(" pt"));
    m_refreshes.push_back([this, width] {
        const QSignalBlocker quiet(width);
        width->setValue(m_settings->resultColumnWidth());
    });
    addRow(form, {"答えの列の幅(&W):", "Answer column &width:"}, width);

    addChoice<SheetListStyle>(
        form, "sheetListStyle", {"シートの一覧(&S):", "&Sheet list:"},
        {{SheetListStyle::both, {"タブとサイドバー", "Tabs and sidebar"}},
         {SheetListStyle::tabs, {"タブ", "Tabs"}},
         {SheetListStyle::sidebar, {"サイドバー", "Sidebar"}}},
        [this] { return m_settings->sheetListStyle(); },
        [this](SheetListStyle value) { m_settings->setSheetListStyle(value); });
    addCheck(
        form, "showsNamedValues", {"名前の付いた値:", "Named values:"},
        {"名前の付いた値の一覧を表示(&N)", "Show the list of &named values"},
        [this] { return m_settings->showsNamedValues(); },
        [this](bool value) { m_settings->setShowsNamedValues(value); });
    addChoice<KeypadSizeSetting>(
        form, "keypadSize", {"キーパッドの大きさ(&K):", "&Keypad size:"},
        {{KeypadSizeSetting::small, {"小", "Small"}},
         {KeypadSizeSetting::medium, {"中", "Medium"}},
         {KeypadSizeSetting::large, {"大", "Large"}}},
        [this] { return m_settings->keypadSize(); },
        [this](KeypadSizeSetting value) { m_settings->setKeypadSize(value); });
    addChoice<KeypadSide>(
        form, "keypadSide", {"キーパッドの位置(&P):", "Keypad &position:"},
        {{KeypadSide::right, {"右", "Right"}}, {KeypadSide::left, {"左", "Left"}}},
        [this] { return m_settings->keypadSide(); },
        [this](KeypadSide value) { m_settings->setKeypadSide(value); });
    endPage(page);
    return page;
}

QWidget* SettingsWindow::buildSyncPage() {
    auto* page = new QWidget;
    QFormLayout* form = makeForm(page);
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);

    m_cloudFolder = new QLineEdit(page);
    m_cloudFolder->setObjectName(QStringLiteral("cloudFolder"));
    m_cloudFolder->setReadOnly(true);
    m_cloudFolder->setMinimumWidth(260);
    auto* choose = new QPushButton(page);
    choose->setObjectName(QStringLiteral("chooseCloudFolder"));
    relabel(choose, {"フォルダーを選択…", "Choose Folder…"});
    connect(choose, &QPushButton::clicked, this, &SettingsWindow::chooseCloudFolder);
    m_stopSyncing = new QPushButton(page);
    m_stopSyncing->setObjectName(QStringLiteral("stopSyncing"));
    relabel(m_stopSyncing, {"同期をやめる", "Stop Syncing"});
    connect(m_stopSyncing, &QPushButton::clicked, this, [this] {
        if (m_settings)
            m_settings->setCloudFolder(QString());
        refresh();
    });
    m_relabels.push_back([this] {
        m_cloudFolder->setPlaceholderText(
            pickText("オフ（このコンピューターだけに保存）", "Off (saved on this computer only)"));
    });
    m_refreshes.push_back([this] {
        const QString folder = m_settings->cloudFolder();
        m_cloudFolder->setText(QDir::toNativeSeparators(folder));
        m_cloudFolder->setToolTip(QDir::toNativeSeparators(folder));
        m_stopSyncing->setEnabled(!folder.isEmpty());
    });

    auto* field = new QWidget(page);
    auto* fieldColumn = new QVBoxLayout(field);
    fieldColumn->setContentsMargins(0, 0, 0, 0);
    fieldColumn->addWidget(m_cloudFolder);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(choose);
    buttons->addWidget(m_stopSyncing);
    buttons->addStretch(1);
    fieldColumn->addLayout(buttons);
    fieldColumn->addWidget(addNote(
        field, {"Dropbox や Nextcloud、Syncthing などが他の端末と同じに保つフォルダーを選ぶと、その中の "
                "「Documents」フォルダーに書類のコピーが置かれ、他の端末の変更と合わせられます。"
                "新しく選んだフォルダーはすぐに使われ、中にすでにある書類も合わせられます。",
                "Choose a folder that a sync client such as Dropbox, Nextcloud or Syncthing keeps the "
                "same on your other devices. Lumo keeps a copy of your sheets in its “Documents” "
                "folder and merges the changes made elsewhere. A folder you choose is used at once, and a "
                "copy already in it is merged with your sheets."}));
    addRow(form, {"同期フォルダー(&F):", "Sync &folder:"}, field);
    choose->setFocusPolicy(Qt::StrongFocus);
    static_cast<QLabel*>(form->labelForField(field))->setBuddy(choose);

    auto* erase = new QGroupBox(page);
    m_relabels.push_back([erase] { erase->setTitle(pickText("全ての内容", "All Content")); });
    auto* eraseColumn = new QVBoxLayout(erase);
    eraseColumn->setContentsMargins(14, 10, 14, 12);
    eraseColumn->addWidget(
        addNote(erase, {"すべてのシートを、このコンピューターと同期している他の端末から消します。",
                        "Deletes every sheet, here and on the devices you sync with."}));
    auto* eraseButton = new QPushButton(erase);
    eraseButton->setObjectName(QStringLiteral("eraseAllContent"));
    relabel(eraseButton, commandDefinition(Command::eraseAllContent).label);
    connect(eraseButton, &QPushButton::clicked, this, &SettingsWindow::eraseAllContentRequested);
    auto* eraseRow = new QHBoxLayout;
    eraseRow->addWidget(eraseButton);
    eraseRow->addStretch(1);
    eraseColumn->addLayout(eraseRow);
    auto* column = static_cast<QVBoxLayout*>(page->layout());
    column->addSpacing(18);
    column->addWidget(erase);
    endPage(page);
    return page;
}

// MARK: - Controls

template <typename Enum>
QComboBox* SettingsWindow::addChoice(QFormLayout* form, const char* name, Bilingual label,
                                     std::vector<std::pair<Enum, Bilingual>> choices,
                                     std::function<Enum()> current, std::function<void(Enum)> apply) {
    auto* combo = new QComboBox(form->parentWidget());
    combo->setObjectName(QString::fromLatin1(name));
    for (const auto& choice : choices)
        combo->addItem(QString(), int(choice.first));
    // A row that grows with the longest label in either language keeps its width when the
    // language switches.
    combo->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    connect(combo, &QComboBox::activated, this, [this, combo, apply](int index) {
        if (m_settings)
            apply(Enum(combo->itemData(index).toInt()));
    });
    m_relabels.push_back([combo, choices] {
        for (std::size_t index = 0; index < choices.size(); ++index)
            combo->setItemText(int(index), choices[index].second.text());
    });
    m_refreshes.push_back([combo, current] {
        const QSignalBlocker quiet(combo);
        combo->setCurrentIndex(combo->findData(int(current())));
    });
    addRow(form, label, combo);
    return combo;
}

QCheckBox* SettingsWindow::addCheck(QFormLayout* form, const char* name, Bilingual label, Bilingual text,
                                    std::function<bool()> current, std::function<void(bool)> apply) {
    auto* check = new QCheckBox(form->parentWidget());
    check->setObjectName(QString::fromLatin1(name));
    connect(check, &QCheckBox::toggled, this, [this, apply](bool on) {
        if (m_settings)
            apply(on);
    });
    relabel(check, text);
    m_refreshes.push_back([check, current] {
        const QSignalBlocker quiet(check);
        check->setChecked(current());
    });
    addRow(form, label, check);
    return check;
}

QLabel* SettingsWindow::addRow(QFormLayout* form, Bilingual label, QWidget* field) {
    auto* name = new QLabel(form->parentWidget());
    name->setBuddy(field);
    relabel(name, label);
    form->addRow(name, field);
    return name;
}

QLabel* SettingsWindow::addNote(QWidget* parent, Bilingual text) {
    auto* note = new QLabel(parent);
    note->setWordWrap(true);
    note->setForegroundRole(QPalette::PlaceholderText);
    note->setMinimumWidth(320);
    relabel(note, text);
    return note;
}

void SettingsWindow::relabel(QWidget* widget, Bilingual text) {
    m_relabels.push_back([widget, text] {
        if (auto* label = qobject_cast<QLabel*>(widget))
            label->setText(text.text());
        else if (auto* button = qobject_cast<QAbstractButton*>(widget))
            button->setText(text.text());
    });
}

void SettingsWindow::retranslate() {
    for (const auto& relabel : m_relabels)
        relabel();
    m_colors->retranslate();
}

void SettingsWindow::refresh() {
    if (!m_settings)
        return;
    // Each control shows the value quietly: showing a value is not changing it.
    for (const auto& refresh : m_refreshes)
        refresh();
}

void SettingsWindow::chooseCloudFolder() {
    if (m_folderDialog) {
        m_folderDialog->raise();
        return;
    }
    m_folderDialog = new QFileDialog(this, pickText("同期フォルダーを選択", "Choose the Sync Folder"));
    m_folderDialog->setAttribute(Qt::WA_DeleteOnClose);
    m_folderDialog->setFileMode(QFileDialog::Directory);
    m_folderDialog->setOption(QFileDialog::ShowDirsOnly);
    const QString current = m_settings ? m_settings->cloudFolder() : QString();
    m_folderDialog->setDirectory(current.isEmpty() ? QDir::homePath() : current);
    connect(m_folderDialog, &QFileDialog::fileSelected, this, [this](const QString& folder) {
        if (m_settings && !folder.isEmpty())
            m_settings->setCloudFolder(QDir::cleanPath(folder));
        refresh();
    });
    m_folderDialog->open();
}

} // namespace lumo
