#pragma once

#include <QStringList>
#include <QWidget>

class QLabel;
class QLineEdit;
class QTextBrowser;
class QUrl;

namespace lumo {

class NotificationCenter;

/// A window with the guide to the sheet language, a find field, and a copy link under every
/// example. It follows the interface language while it is open.
class HelpWindow : public QWidget {
    Q_OBJECT

public:
    explicit HelpWindow(NotificationCenter* notifications, QWidget* parent = nullptr);

    QTextBrowser* browser() const { return m_browser; }
    QLineEdit* findField() const { return m_find; }
    const QStringList& examples() const { return m_examples; }

protected:
    void changeEvent(QEvent* event) override;

private:
    void rebuild();
    void openLink(const QUrl& link);
    void findNext(bool fromStart);

    QLineEdit* m_find = nullptr;
    QLabel* m_status = nullptr;
    QTextBrowser* m_browser = nullptr;
    QStringList m_examples;
};

} // namespace lumo
