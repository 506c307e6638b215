#pragma once

#include <QMessageBox>
#include <QString>

#include <functional>

namespace lumo {

/// A question whose answer either goes ahead with something that cannot be taken back lightly
/// or leaves everything as it was. Cancel is the default, so Return never destroys anything.
/// It is window-modal and opened without a nested event loop; its owner listens to
/// confirmed() and cancelled().
class ConfirmationDialog : public QMessageBox {
    Q_OBJECT

public:
    enum class Kind { ordinary, destructive };

    struct Texts {
        QString title;
        QString text;
        QString confirmLabel;
    };
    /// Gives the texts in the language in force; asked again by retranslate().
    using TextSource = std::function<Texts()>;

    ConfirmationDialog(TextSource texts, Kind kind, QWidget* parent = nullptr);
    /// Texts that stay as they are in every language.
    ConfirmationDialog(const QString& title, const QString& text, const QString& confirmLabel, Kind kind,
                       QWidget* parent = nullptr);

    /// Emptying one sheet, which the sheet's undo brings back.
    static ConfirmationDialog* clearSheet(QWidget* parent);
    /// Erasing every sheet on every device.
    static ConfirmationDialog* eraseAllContent(QWidget* parent);

    QAbstractButton* confirmButton() const { return m_confirm; }
    QAbstractButton* cancelButton() const { return m_cancel; }

    /// Shows the texts again in the language now in force.
    void retranslate();

signals:
    void confirmed();
    void cancelled();

private:
    TextSource m_texts;
    QAbstractButton* m_confirm = nullptr;
    QAbstractButton* m_cancel = nullptr;
};

} // namespace lumo
