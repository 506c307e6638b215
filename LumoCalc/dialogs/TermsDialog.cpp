#include "LumoCalc/dialogs/TermsDialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTextBrowser>
#include <QVBoxLayout>

#include "LumoCalc/text/Bilingual.h"
#include "LumoUI/settings/AppSettings.h"
#include "LumoUI/settings/NotificationCenter.h"

namespace lumo {

namespace {

struct TermsSection {
    Bilingual heading;
    Bilingual body;
};

// clang-format off
const TermsSection termsSections[] = {
    {{"Lumo について", "About Lumo"},
     {"Lumo は、打った式をその場で計算して答えを表示する計算用のメモ帳です。この規約に同意すると、Lumo を無料でお使いいただけます。",
      "Lumo is a notepad that calculates each line as you type and shows its answer. By accepting these terms you may use Lumo free of charge."}},
    {{"保存するもの", "What Lumo stores"},
     {"あなたが書いたシート（名前、本文、ロックした行、並び順、削除したシートの記録、キーパッドの配置）は、このコンピューターのあなたのデータフォルダーにある 1 つのファイル「document.json」に保存されます。言語や表示などの設定は、このコンピューターのあなたの設定に保存されます。",
      "The sheets you write (their names, text, locked lines and order, a record of the sheets you deleted, and your keypad arrangement) are saved in one file, “document.json”, in your data folder on this computer. Preferences such as the language and the appearance are saved in your settings on this computer."}},
    {{"外に出ないもの", "What never leaves this computer"},
     {"Lumo はインターネットに接続しません。広告も利用状況の収集もありません。ただ 1 つの例外は同期です。同期するフォルダーを指定した場合に限り、同じ「document.json」の写しをそのフォルダーに書き込み、あなたのほかの端末の変更を読み込みます。そのフォルダーを端末間で運ぶのは、あなたが選んだ同期サービスです。",
      "Lumo does not connect to the internet. There is no advertising and no collection of usage data. The one exception is syncing: only if you choose a synced folder does Lumo write a copy of the same “document.json” there and read the changes made on your other devices. Carrying that folder between devices is the job of the sync service you chose."}},
    {{"保証しないこと", "No warranty"},
     {"Lumo は「現状のまま」提供され、明示か黙示かを問わず、いかなる保証もありません。計算結果は大切な判断の前に必ず確かめてください。Lumo の使用や使用できなかったことで生じたいかなる損害についても、作者は責任を負いません。",
      "Lumo is provided “as is”, without warranty of any kind, express or implied. Check its answers before you rely on them for anything important. The authors are not liable for any damage arising from the use of Lumo or from being unable to use it."}},
    {{"消去について", "Erasing"},
     {"シートはいつでも消せます。「全ての内容を消去」を使うと、すべてのシートが消え、同期しているほかの端末からも消えます。",
      "You can delete sheets at any time. Erase All Content deletes every sheet, here and on the devices you sync with."}},
};
// clang-format on

} // namespace

TermsDialog::TermsDialog(Mode mode, AppSettings* settings, NotificationCenter* notifications, QWidget* parent)
    : QDialog(parent), m_mode(mode), m_settings(settings) {
    setObjectName(QStringLiteral("termsDialog"));
    setMinimumSize(480, 420);
    resize(560, 560);

    m_heading = new QLabel(this);
    QFont headingFont = m_heading->font();
    headingFont.setPointSizeF(headingFont.pointSizeF() * 1.5);
    headingFont.setBold(true);
    m_heading->setFont(headingFont);

    m_text = new QTextBrowser(this);
    m_text->setOpenLinks(false);
    m_text->document()->setDocumentMargin(12);
    // The text is read, not navigated: Tab should reach the buttons, and Return must accept.
    m_text->setFocusPolicy(Qt::NoFocus);

    m_languageLabel = new QLabel(this);
    m_language = new QComboBox(this);
    m_language->addItem(QString(), QVariant::fromValue(int(AppLanguage::system)));
    m_language->addItem(QStringLiteral("日本語"), QVariant::fromValue(int(AppLanguage::japanese)));
    m_language->addItem(QStringLiteral("English"), QVariant::fromValue(int(AppLanguage::english)));
    m_languageLabel->setBuddy(m_language);
    if (m_settings)
        m_language->setCurrentIndex(m_language->findData(int(m_settings->language())));
    connect(m_language, &QComboBox::activated, this, [this](int index) {
        if (m_settings)
            m_settings->setLanguage(AppLanguage(m_language->itemData(index).toInt()));
    });

    auto* buttons = new QDialogButtonBox(this);
    if (m_mode == Mode::firstRun) {
        m_accept = buttons->addButton(QString(), QDialogButtonBox::AcceptRole);
        m_decline = buttons->addButton(QString(), QDialogButtonBox::RejectRole);
    } else {
        m_accept = buttons->addButton(QString(), QDialogButtonBox::AcceptRole);
    }
    m_accept->setDefault(true);
    m_accept->setAutoDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* bottom = new QHBoxLayout;
    bottom->addWidget(m_languageLabel);
    bottom->addWidget(m_language);
    bottom->addStretch();
    bottom->addWidget(buttons);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 16);
    layout->setSpacing(12);
    layout->addWidget(m_heading);
    layout->addWidget(m_text, 1);
    layout->addLayout(bottom);

    if (notifications)
        notifications->observe(notification::languageChanged, this, [this] { retranslate(); });
    retranslate();
    m_accept->setFocus();
}

QString TermsDialog::termsHtml() {
    QString html;
    for (const TermsSection& section : termsSections) {
        html += QStringLiteral("<h3>%1</h3><p>%2</p>")
                    .arg(section.heading.text().toHtmlEscaped(), section.body.text().toHtmlEscaped());
    }
    return html;
}

void TermsDialog::accept() {
    if (m_mode == Mode::firstRun && m_settings)
        m_settings->acceptTerms();
    QDialog::accept();
}

void TermsDialog::retranslate() {
    setWindowTitle(pickText("Lumo の利用規約", "Lumo Terms of Use"));
    m_heading->setText(m_mode == Mode::firstRun ? pickText("Lumo へようこそ", "Welcome to Lumo")
                                                : pickText("利用規約", "Terms of Use"));
    m_text->setHtml(termsHtml());
    m_languageLabel->setText(pickText("言語(&L):", "&Language:"));
    m_language->setItemText(0, pickText("システムに合わせる", "System"));
    if (m_mode == Mode::firstRun) {
        m_accept->setText(pickText("同意する", "Accept"));
        m_decline->setText(pickText("同意しない", "Decline"));
    } else {
        m_accept->setText(pickText("閉じる", "Close"));
    }
}

} // namespace lumo
