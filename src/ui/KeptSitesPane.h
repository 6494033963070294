#pragma once

#include "ui/PreferencesPane.h"

#include <functional>

class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class UserDefaults;

// The sites whose cookies and site data every clean keeps ("keptSites"): the list, a field to add
// one, and the sites that hold cookies now in the protected browsers to pick from (read each time the
// pane opens, never stored).
class KeptSitesPreferencesViewController : public PreferencesPane
{
    Q_OBJECT
public:
    KeptSitesPreferencesViewController(UserDefaults& defaults, std::function<QStringList()> sitesWithCookies,
                                       QWidget* parent = nullptr);

    static QString paneIdentifier();
    QString identifier() const override { return paneIdentifier(); }
    QIcon toolbarItemImage() const override;
    QString toolbarItemLabel() const override;
    std::optional<bool> hasResizableHeight() const override { return true; }
    void viewWillAppear() override;

    // Adds the typed site; false (and a message under the field) when it is no host name.
    bool addTypedSite();
    void removeSelectedSites();
    void keepSelectedSuggestions();

    QListWidget* keptList() const { return m_kept; }
    QLineEdit* siteField() const { return m_field; }
    QLabel* problem() const { return m_problem; }
    QListWidget* suggestionList() const { return m_suggestions; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QStringList storedSites() const;
    bool store(const QStringList& sites);
    void showStoredSites();
    void showSuggestions();

    UserDefaults& m_defaults;
    std::function<QStringList()> m_sitesWithCookies;
    QStringList m_cookieSites; // read when the pane opens
    QListWidget* m_kept;
    QLineEdit* m_field;
    QPushButton* m_addButton;
    QPushButton* m_removeButton;
    QLabel* m_problem;
    QListWidget* m_suggestions;
    QPushButton* m_keepButton;
    QCheckBox* m_exceptions;
};
