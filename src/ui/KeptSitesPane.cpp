#include "ui/KeptSitesPane.h"

#include "cleaners/KeptSites.h"
#include "platform/SettingsKeys.h"
#include "platform/UserDefaults.h"
#include "ui/PreferencesPanes.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

// A list a few lines high to start with; the pane grows when the window does.
class SiteList : public QListWidget
{
public:
    using QListWidget::QListWidget;
    QSize sizeHint() const override { return {240, 7 * fontMetrics().lineSpacing()}; }
};

QListWidget* siteList(const QString& name, QWidget* parent)
{
    auto* list = new SiteList(parent);
    list->setAccessibleName(name);
    list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list->setSortingEnabled(true);
    return list;
}

QLabel* heading(const QString& text, QWidget* buddy, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setBuddy(buddy);
    return label;
}

} // namespace

KeptSitesPreferencesViewController::KeptSitesPreferencesViewController(
    UserDefaults& defaults, std::function<QStringList()> sitesWithCookies, QWidget* parent)
    : PreferencesPane(parent), m_defaults(defaults), m_sitesWithCookies(std::move(sitesWithCookies)),
      m_kept(siteList(tr("Kept sites"), this)), m_field(new QLineEdit(this)),
      m_addButton(new QPushButton(tr("Add"), this)), m_removeButton(new QPushButton(tr("Remove"), this)),
      m_problem(new QLabel(this)), m_suggestions(siteList(tr("Sites with cookies now"), this)),
      m_keepButton(new QPushButton(tr("Keep"), this)),
      m_exceptions(new QCheckBox(tr("Also keep each browser's own exceptions"), this))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 18, 24, 20);
    layout->setSpacing(6);
    auto* intro = new QLabel(tr("Corvella keeps the cookies and site data of these sites, so you stay signed "
                                "in to them; every other site is forgotten. “example.com” also keeps its "
                                "subdomains."),
                             this);
    intro->setWordWrap(true);
    layout->addWidget(intro);
    layout->addWidget(heading(tr("&Kept sites:"), m_kept, this));
    layout->addWidget(m_kept, 2);

    auto* addRow = new QHBoxLayout;
    m_field->setPlaceholderText(tr("e.g. mail.example.com"));
    m_field->setAccessibleName(tr("Site to keep"));
    m_field->setClearButtonEnabled(true);
    m_addButton->setAccessibleName(tr("Add the site"));
    m_removeButton->setAccessibleName(tr("Remove the selected sites"));
    addRow->addWidget(m_field, 1);
    addRow->addWidget(m_addButton);
    addRow->addWidget(m_removeButton);
    layout->addLayout(addRow);
    m_problem->setWordWrap(true);
    m_problem->setAccessibleName(tr("Site problem"));
    QPalette warning = m_problem->palette();
    warning.setColor(QPalette::WindowText, QColor(0xd0, 0x3a, 0x2f));
    m_problem->setPalette(warning);
    m_problem->hide();
    layout->addWidget(m_problem);

    layout->addSpacing(8);
    layout->addWidget(heading(tr("&Sites with cookies now:"), m_suggestions, this));
    layout->addWidget(m_suggestions, 1);
    m_keepButton->setAccessibleName(tr("Keep the selected sites"));
    auto* keepRow = new QHBoxLayout;
    keepRow->addStretch();
    keepRow->addWidget(m_keepButton);
    layout->addLayout(keepRow);
    layout->addSpacing(8);
    m_exceptions->setAccessibleName(m_exceptions->text());
    bindCheckBox(m_exceptions, defaults, SettingsKeys::keepBrowserExceptions);
    layout->addWidget(m_exceptions);
    auto* exceptionsNote = new QLabel(tr("The sites you told a browser to always allow cookies for."), this);
    exceptionsNote->setWordWrap(true);
    exceptionsNote->setContentsMargins(24, 0, 0, 0);
    layout->addWidget(exceptionsNote);

    connect(m_addButton, &QPushButton::clicked, this, &KeptSitesPreferencesViewController::addTypedSite);
    connect(m_field, &QLineEdit::returnPressed, this, &KeptSitesPreferencesViewController::addTypedSite);
    connect(m_field, &QLineEdit::textEdited, m_problem, &QWidget::hide);
    connect(m_removeButton, &QPushButton::clicked, this,
            &KeptSitesPreferencesViewController::removeSelectedSites);
    connect(m_keepButton, &QPushButton::clicked, this,
            &KeptSitesPreferencesViewController::keepSelectedSuggestions);
    connect(m_suggestions, &QListWidget::itemActivated, this,
            &KeptSitesPreferencesViewController::keepSelectedSuggestions);
    connect(m_kept, &QListWidget::itemSelectionChanged, this,
            [this] { m_removeButton->setEnabled(!m_kept->selectedItems().isEmpty()); });
    connect(m_suggestions, &QListWidget::itemSelectionChanged, this,
            [this] { m_keepButton->setEnabled(!m_suggestions->selectedItems().isEmpty()); });
    connect(&defaults, &UserDefaults::valueChanged, this, [this](const QString& key) {
        if (key == SettingsKeys::keptSites) {
            showStoredSites();
            showSuggestions();
        }
    });
    m_kept->installEventFilter(this); // Delete removes, as in any list
    showStoredSites();
    m_keepButton->setEnabled(false);
}

QString KeptSitesPreferencesViewController::paneIdentifier()
{
    //: Names the pane in the stored settings: keep it as it is.
    return tr("KeptSitesPreferences_en");
}

QIcon KeptSitesPreferencesViewController::toolbarItemImage() const
{
    return QIcon::fromTheme(QStringLiteral("applications-internet"),
                            QIcon(QStringLiteral(":/icons/kept.svg")));
}

QString KeptSitesPreferencesViewController::toolbarItemLabel() const
{
    return tr("Kept Sites");
}

void KeptSitesPreferencesViewController::viewWillAppear()
{
    m_cookieSites = m_sitesWithCookies ? m_sitesWithCookies() : QStringList();
    showSuggestions();
}

QStringList KeptSitesPreferencesViewController::storedSites() const
{
    QStringList sites;
    for (const QVariant& site : m_defaults.arrayForKey(SettingsKeys::keptSites))
        sites.append(site.toString());
    return sites;
}

bool KeptSitesPreferencesViewController::store(const QStringList& sites)
{
    QVariantList stored;
    for (const QString& site : KeptSites::normalisedList(sites))
        stored.append(site);
    if (m_defaults.setObject(stored, SettingsKeys::keptSites))
        return true;
    m_problem->setText(tr("The kept sites could not be saved in the settings."));
    m_problem->show();
    return false;
}

bool KeptSitesPreferencesViewController::addTypedSite()
{
    const QString typed = m_field->text().trimmed();
    if (typed.isEmpty())
        return false;
    const std::optional<QString> site = KeptSites::normalised(typed);
    if (!site) {
        m_problem->setText(tr("“%1” is no site name. Type a name such as example.com, an IP address or "
                              "localhost, without “https://” or a path.")
                               .arg(typed));
        m_problem->show();
        return false;
    }
    if (!store(storedSites() << *site))
        return false;
    m_field->clear();
    m_problem->hide();
    return true;
}

void KeptSitesPreferencesViewController::removeSelectedSites()
{
    QStringList sites = storedSites();
    for (const QListWidgetItem* item : m_kept->selectedItems())
        sites.removeAll(item->text());
    store(sites);
}

void KeptSitesPreferencesViewController::keepSelectedSuggestions()
{
    QStringList sites = storedSites();
    for (const QListWidgetItem* item : m_suggestions->selectedItems())
        sites.append(item->text());
    store(sites);
}

void KeptSitesPreferencesViewController::showStoredSites()
{
    m_kept->clear();
    m_kept->addItems(storedSites());
    m_removeButton->setEnabled(false);
}

void KeptSitesPreferencesViewController::showSuggestions()
{
    const KeptSites kept(storedSites());
    m_suggestions->clear();
    for (const QString& site : std::as_const(m_cookieSites)) {
        if (!kept.keepsHost(site))
            m_suggestions->addItem(site);
    }
}

bool KeptSitesPreferencesViewController::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_kept && event->type() == QEvent::KeyPress &&
        (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Delete ||
         static_cast<QKeyEvent*>(event)->key() == Qt::Key_Backspace)) {
        removeSelectedSites();
        return true;
    }
    return PreferencesPane::eventFilter(watched, event);
}
