#include "LumoCalc/dialogs/ConfirmationDialog.h"

#include <QPushButton>

#include "LumoCalc/text/Bilingual.h"
#include "LumoUI/store/DocumentStore.h"

namespace lumo {

ConfirmationDialog::ConfirmationDialog(const QString& title, const QString& text, const QString& confirmLabel,
                                       Kind kind, QWidget* parent)
    : QMessageBox(parent) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
    setIcon(kind == Kind::destructive ? QMessageBox::Warning : QMessageBox::Question);
    setTextFormat(Qt::RichText);
    setText(QStringLiteral("<b>%1</b>").arg(title.toHtmlEscaped()));
    setWindowTitle(title);
    setInformativeText(text);
    auto* confirm = addButton(confirmLabel, kind == Kind::destructive ? DestructiveRole : AcceptRole);
    auto* cancel = addButton(pickText("キャンセル", "Cancel"), RejectRole);
    m_confirm = confirm;
    m_cancel = cancel;
    setDefaultButton(cancel);
    setEscapeButton(cancel);
    connect(this, &QMessageBox::buttonClicked, this, [this](QAbstractButton* button) {
        if (button == m_confirm)
            emit confirmed();
        else
            emit cancelled();
    });
}

ConfirmationDialog* ConfirmationDialog::clearSheet(const QString& prompt, QWidget* parent) {
    return new ConfirmationDialog(pickText("このシートを消去しますか？", "Clear This Sheet?"), prompt,
                                  pickText("消去", "Clear"), Kind::destructive, parent);
}

ConfirmationDialog* ConfirmationDialog::eraseAllContent(QWidget* parent) {
    return new ConfirmationDialog(QString::fromStdString(DocumentStore::eraseAllContentTitle()),
                                  QString::fromStdString(DocumentStore::eraseAllContentMessage()),
                                  QString::fromStdString(DocumentStore::eraseAllContentButton()),
                                  Kind::destructive, parent);
}

} // namespace lumo
