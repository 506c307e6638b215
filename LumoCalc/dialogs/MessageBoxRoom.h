#pragma once

#include <QMessageBox>

namespace lumo {

/// QMessageBox wraps its informative text at a width meant for a few words; a box that says a
/// sentence or two gives it this much room instead.
inline void giveSentencesRoom(QMessageBox* box) {
    box->setStyleSheet(QStringLiteral("QLabel#qt_msgbox_informativelabel { min-width: 320px; }"));
}

} // namespace lumo
