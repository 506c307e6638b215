#pragma once

#include <QDialog>
#include <QString>

#include <functional>
#include <optional>

class QLabel;
class QLineEdit;
class QPushButton;

namespace lumo {

/// Asks for a line's name. The name is checked when the user confirms; a refused name shows
/// why under its own title and the dialog stays open for another try.
class NameLineDialog : public QDialog {
    Q_OBJECT

public:
    /// Nothing when the name may be used, otherwise the reason it can't.
    using Validator = std::function<std::optional<QString>(const QString& name)>;

    enum class Purpose { name, rename };

    NameLineDialog(Purpose purpose, const QString& lineText, const QString& proposedName, Validator validator,
                   QWidget* parent = nullptr);

    /// The accepted name, trimmed.
    QString name() const;
    QLineEdit* nameField() const { return m_field; }
    /// The refusal shown, empty while there is none.
    QString refusal() const;
    /// Sets every text in the current language; the owner calls it when the language changes.
    void relabel();

public slots:
    void accept() override;

private:
    Purpose m_purpose;
    Validator m_validator;
    QLabel* m_hint = nullptr;
    QLineEdit* m_field = nullptr;
    QLabel* m_refusalTitle = nullptr;
    QLabel* m_refusal = nullptr;
    QPushButton* m_confirm = nullptr;
    QPushButton* m_cancel = nullptr;
};

} // namespace lumo
