#include "LumoCalc/dialogs/ConfirmationDialog.h"

#include <QPushButton>

#include "LumoCalc/dialogs/MessageBoxRoom.h"
#include "LumoCalc/text/Bilingual.h"
#include "LumoUI/store/DocumentStore.h"
#include "LumoUI/store/StoreTexts.h"

namespace lumo {

ConfirmationDialog::ConfirmationDialog(const QString& title, const QString& text, const QString& confirmLabel,
                                       Kind kind, QWidget* parent)
    : ConfirmationDialog(
          [title, text, confirmLabel] {
              return Texts{title, text, confirmLabel};
          },
          kind, parent) {}

ConfirmationDialog::ConfirmationDialog(TextSource texts, Kind kind, QWidget* parent)
    : QMessageBox(parent), m_texts(std::move(texts)) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
    setIcon(kind == Kind::destructive ? QMessageBox::Warning : QMessageBox::Question);
    setTextFormat(Qt::RichText);
    giveSentencesRoom(this);
    auto* confirm = addButton(QString(), kind == Kind::destructive ? DestructiveRole : AcceptRole);
    auto* cancel = addButton(QString(), RejectRole);
    m_confirm = confirm;
    m_cancel = cancel;
    retranslate();
    setDefaultButton(cancel);
    setEscapeButton(cancel);
    connect(this, &QMessageBox::buttonClicked, this, [this](QAbstractButton* button) {
        if (button == m_confirm)
            emit confirmed();
        else
            emit cancelled();
    });
}

void ConfirmationDialog::retranslate() {
    const Texts texts = m_texts();
    setText(QStringLiteral("<b>%1</b>").arg(texts.title.toHtmlEscaped()));
    setWindowTitle(texts.title);
    setInformativeText(texts.text);
    m_confirm->setText(texts.confirmLabel);
    m_cancel->setText(pickText("キャンセル", "Cancel"));
}

ConfirmationDialog* ConfirmationDialog::clearSheet(QWidget* parent) {
    return new ConfirmationDialog(
        [] {
            return Texts{pickText("このシートを消去しますか？", "Clear This Sheet?"),
                         QString::fromStdString(storeTexts::clearSheetPrompt()), pickText("消去", "Clear")};
        },
        Kind::destructive, parent);
}

ConfirmationDialog* ConfirmationDialog::eraseAllContent(QWidget* parent) {
    return new ConfirmationDialog(
        [] {
            return Texts{QString::fromStdString(DocumentStore::eraseAllContentTitle()),
                         QString::fromStdString(DocumentStore::eraseAllContentMessage()),
                         QString::fromStdString(DocumentStore::eraseAllContentButton())};
        },
        Kind::destructive, parent);
}

} // namespace lumo
