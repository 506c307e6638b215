#include "LumoUI/editor/NameLineDialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "LumoKit/base/Language.h"

namespace lumo {

namespace {

QString pick(const char* japanese, const char* english) {
    return QString::fromStdString(L10n::pick(japanese, english));
}

} // namespace

NameLineDialog::NameLineDialog(Purpose purpose, const QString& lineText, const QString& proposedName,
                               Validator validator, QWidget* parent)
    : QDialog(parent), m_purpose(purpose), m_validator(std::move(validator)) {
    setModal(true);

    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(8);
    auto* line = new QLabel(this);
    line->setTextFormat(Qt::PlainText);
    line->setText(lineText.trimmed());
    line->setWordWrap(true);
    QFont lineFont = line->font();
    lineFont.setWeight(QFont::DemiBold);
    line->setFont(lineFont);
    layout->addWidget(line);

    if (m_purpose == Purpose::rename) {
        m_hint = new QLabel(this);
        m_hint->setWordWrap(true);
        layout->addWidget(m_hint);
    }

    m_field = new QLineEdit(proposedName, this);
    m_field->selectAll();
    m_field->setMinimumWidth(280);
    layout->addWidget(m_field);

    m_refusalTitle = new QLabel(this);
    QFont titleFont = m_refusalTitle->font();
    titleFont.setWeight(QFont::Bold);
    m_refusalTitle->setFont(titleFont);
    m_refusal = new QLabel(this);
    m_refusal->setWordWrap(true);
    m_refusal->setTextFormat(Qt::PlainText);
    const QString warning = QStringLiteral("color: #C0392B;");
    m_refusalTitle->setStyleSheet(warning);
    m_refusal->setStyleSheet(warning);
    m_refusalTitle->hide();
    m_refusal->hide();
    layout->addWidget(m_refusalTitle);
    layout->addWidget(m_refusal);

    auto* buttons = new QDialogButtonBox(this);
    m_confirm = buttons->addButton(QString(), QDialogButtonBox::AcceptRole);
    m_confirm->setDefault(true);
    m_cancel = buttons->addButton(QString(), QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &NameLineDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &NameLineDialog::reject);
    layout->addWidget(buttons);
    relabel();

    // A changed name clears the old refusal, which no longer applies to it.
    connect(m_field, &QLineEdit::textEdited, this, [this] {
        m_refusalTitle->hide();
        m_refusal->hide();
    });
}

void NameLineDialog::relabel() {
    const bool renaming = m_purpose == Purpose::rename;
    setWindowTitle(renaming ? pick("名前を変える", "Rename")
                            : pick("この行に名前を付ける", "Name that line"));
    if (m_hint)
        m_hint->setText(pick("この名前を使っている行もすべて一緒に変わります。",
                             "Every line using the name is updated together."));
    m_refusalTitle->setText(pick("名前を付けられません", "Can’t Use This Name"));
    m_confirm->setText(renaming ? pick("名前を変える", "Rename") : pick("名前を付ける", "Name"));
    m_cancel->setText(pick("キャンセル", "Cancel"));
    // A refusal on screen is asked for again, so that it too is in the new language.
    if (!m_refusal->isHidden() && m_validator) {
        if (const std::optional<QString> message = m_validator(m_field->text()))
            m_refusal->setText(*message);
    }
}

QString NameLineDialog::name() const {
    return m_field->text().trimmed();
}

QString NameLineDialog::refusal() const {
    return m_refusal->isVisible() || !m_refusal->isHidden() ? m_refusal->text() : QString();
}

void NameLineDialog::accept() {
    if (m_validator) {
        if (const std::optional<QString> message = m_validator(m_field->text())) {
            m_refusal->setText(*message);
            m_refusalTitle->show();
            m_refusal->show();
            m_field->setFocus();
            m_field->selectAll();
            return;
        }
    }
    QDialog::accept();
}

} // namespace lumo
