#pragma once

#include <QDialog>
#include <QPointer>

class QComboBox;
class QLabel;
class QPushButton;
class QTextBrowser;

namespace lumo {

class AppSettings;
class NotificationCenter;

/// The terms of use. On first run they come before anything else and must be accepted
/// (Return accepts; declining quits the application); later they can be read again.
class TermsDialog : public QDialog {
    Q_OBJECT

public:
    enum class Mode {
        firstRun, ///< Accept or decline; accepting records it in the settings.
        reading,  ///< Only a close button.
    };

    TermsDialog(Mode mode, AppSettings* settings, NotificationCenter* notifications,
                QWidget* parent = nullptr);

    /// The terms as rich text in the interface language.
    static QString termsHtml();

    QPushButton* acceptButton() const { return m_accept; }
    QPushButton* declineButton() const { return m_decline; }

    void accept() override;

private:
    void retranslate();

    Mode m_mode;
    QPointer<AppSettings> m_settings;
    QLabel* m_heading = nullptr;
    QTextBrowser* m_text = nullptr;
    QLabel* m_languageLabel = nullptr;
    QComboBox* m_language = nullptr;
    QPushButton* m_accept = nullptr;
    QPushButton* m_decline = nullptr;
};

} // namespace lumo
