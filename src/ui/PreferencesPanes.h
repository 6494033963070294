#pragma once

#include "ui/PreferencesPane.h"

#include <QSet>

class QAbstractButton;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTextBrowser;
class UserDefaults;

// Keeps a check box and a boolean setting alike both ways: a click stores the key (and springs back
// when it cannot be saved), a change of the key (here, on disk, from another machine) moves the box.
void bindCheckBox(QAbstractButton* box, UserDefaults& defaults, const QString& key);

// Start at login, notifications, what removal does, and the folder that shares the settings.
class GeneralPreferencesViewController : public PreferencesPane
{
    Q_OBJECT
public:
    GeneralPreferencesViewController(UserDefaults& defaults, const QString& home, QWidget* parent = nullptr);

    static QString paneIdentifier();
    QString identifier() const override { return paneIdentifier(); }
    QIcon toolbarItemImage() const override;
    QString toolbarItemLabel() const override;
    // A synced folder typed in but not usable keeps the pane up, saying why.
    bool commitEditing() override;
    // Asks for the synced folder with the file dialog and keeps it when it is usable.
    void chooseSyncFolder();

    QLineEdit* syncFolderField() const { return m_syncFolderField; }
    QLabel* syncFolderProblem() const { return m_syncFolderProblem; }

private:
    void showStoredFolder();

    UserDefaults& m_defaults;
    QString m_home;
    QLineEdit* m_syncFolderField;
    QPushButton* m_chooseButton;
    QLabel* m_syncFolderProblem;
};

// Where Corvella shows itself: the tray item and the window's task-bar entry.
class DisplayPreferencesViewController : public PreferencesPane
{
    Q_OBJECT
public:
    explicit DisplayPreferencesViewController(UserDefaults& defaults, QWidget* parent = nullptr);

    QString identifier() const override;
    QIcon toolbarItemImage() const override;
    QString toolbarItemLabel() const override;
};

// The update choices. On Linux the package manager updates Corvella; the choices are still kept (and
// shared between machines) for an updater that reads them.
class UpdatePreferencesViewController : public PreferencesPane
{
    Q_OBJECT
public:
    explicit UpdatePreferencesViewController(UserDefaults& defaults, QWidget* parent = nullptr);
    ~UpdatePreferencesViewController() override;

    QString identifier() const override;
    QIcon toolbarItemImage() const override;
    QString toolbarItemLabel() const override;
    // Ends the mirroring of the update keys, as the pane does when it goes away.
    void stopObserving();

    QCheckBox* checkForUpdatesButton() const { return m_checkForUpdatesButton; }
    QComboBox* checkScheduleButton() const { return m_checkScheduleButton; }
    QCheckBox* autoInstallButton() const { return m_autoInstallButton; }

private:
    void observeValueForKeyPath(const QString& keyPath);

    UserDefaults& m_defaults;
    QSet<QString> m_observed;
    QCheckBox* m_checkForUpdatesButton;
    QComboBox* m_checkScheduleButton;
    QCheckBox* m_autoInstallButton;
};

// The credits with the version, and the ways to the project's home page and its issue tracker.
class AboutPreferencesViewController : public PreferencesPane
{
    Q_OBJECT
public:
    explicit AboutPreferencesViewController(QWidget* parent = nullptr);

    QString identifier() const override;
    QIcon toolbarItemImage() const override;
    QString toolbarItemLabel() const override;
    std::optional<bool> hasResizableHeight() const override { return true; }

    QTextBrowser* creditsView() const { return m_creditsView; }
    static QUrl homePage();
    static QUrl issueTracker();

private:
    QTextBrowser* m_creditsView;
};
