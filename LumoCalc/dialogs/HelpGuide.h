#pragma once

#include <QColor>
#include <QString>
#include <QStringList>

namespace lumo {

/// The guide to the sheet language that the help window shows, in the interface language.
/// It is made from the tutorial sheets, evaluated the way a document evaluates them so every
/// example shows its real answer, and from the short explanations the interface uses elsewhere.
struct HelpGuide {
    struct Colours {
        QColor text = Qt::black;
        QColor exampleBackground = QColor(0xf2, 0xf2, 0xf2);
        QColor answer = QColor(0x20, 0x6b, 0xc4);
        QColor failure = QColor(0xc4, 0x2b, 0x1c);
        QColor note = QColor(0x6e, 0x6e, 0x6e);
    };

    /// Rich text for a QTextBrowser. Each example is followed by a link "copy:N" for the Nth
    /// entry of `examples`.
    QString html;
    /// The text of each example block, as it would be typed into a sheet.
    QStringList examples;

    static HelpGuide build(const Colours& colours);
    static QString copyLink(int index) { return QStringLiteral("copy:%1").arg(index); }
};

} // namespace lumo
