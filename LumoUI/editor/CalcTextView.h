#pragma once

#include <QPlainTextEdit>

namespace lumo {

/// The text of a sheet as the user edits it.
class CalcTextView : public QPlainTextEdit {
    Q_OBJECT

public:
    explicit CalcTextView(QWidget* parent = nullptr);
};

} // namespace lumo
