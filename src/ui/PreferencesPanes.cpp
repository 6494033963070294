#include "ui/PreferencesPanes.h"

#include "platform/SettingsKeys.h"
#include "platform/UserDefaults.h"
#include "platform/linux/SyncFolderKeyValueStore.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QFile>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QTextBrowser>
#include <QUrl>
#include <QVBoxLayout>

namespace {

// A quieter line under a control that says what it means.
QLabel* note(const QString& text, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    // Between the text and the background, in any theme.
    QPalette quiet = label->palette();
    const QColor ink = quiet.color(QPalette::WindowText), paper = quiet.color(QPalette::Window);
    quiet.setColor(QPalette::WindowText, QColor::fromRgbF(0.65 * ink.redF() + 0.35 * paper.redF(),
                                                          0.65 * ink.greenF() + 0.35 * paper.greenF(),
                                                          0.65 * ink.blueF() + 0.35 * paper.blueF()));
    label->setPalette(quiet);
    label->setContentsMargins(24, 0, 0, 4);
    return label;
}

QCheckBox* boundBox(const QString& text, UserDefaults& defaults, const QString& key, QWidget* parent)
{
    auto* box = new QCheckBox(text, parent);
    box->setAccessibleName(text);
    bindCheckBox(box, defaults, key);
    return box;
}

QVBoxLayout* paneLayout(QWidget* pane)
{
    auto* layout = new QVBoxLayout(pane);
    layout->setContentsMargins(24, 18, 24, 20);
    layout->setSpacing(6);
    return layout;
}

// One control follows another: enabled only while that one is ticked.
void enableWhileChecked(QWidget* follower, QCheckBox* leader)
{
    follower->setEnabled(leader->isChecked());
    QObject::connect(leader, &QCheckBox::toggled, follower, &QWidget::setEnabled);
}

} // namespace

void bindCheckBox(QAbstractButton* box, UserDefaults& defaults, const QString& key)
{
    box->setChecked(defaults.boolForKey(key));
    QObject::connect(box, &QAbstractButton::toggled, box, [box, &defaults, key](bool checked) {
        if (defaults.boolForKey(key) == checked)
            return;
        if (!defaults.setBool(checked, key)) {
            const QSignalBlocker quiet(box);
            box->setChecked(!checked); // not saved: the box shows what is stored
        }
    });
    QObject::connect(&defaults, &UserDefaults::valueChanged, box,
                     [box, &defaults, key](const QString& changed) {
                         if (changed == key)
                             box->setChecked(defaults.boolForKey(key));
                     });
}

// General ----------------------------------------------------------------------------------------------

GeneralPreferencesViewController::GeneralPreferencesViewController(UserDefaults& defaults,
                                                                   const QString& home, QWidget* parent)
    : PreferencesPane(parent), m_defaults(defaults), m_home(home), m_syncFolderField(new QLineEdit(this)),
      m_chooseButton(new QPushButton(tr("Choose…"), this)), m_syncFolderProblem(new QLabel(this))
{
    auto* layout = paneLayout(this);
    auto* login = boundBox(tr("Start Corvella when you log in"), defaults, SettingsKeys::loginStart, this);
    auto* hidden = boundBox(tr("Keep the window closed when started at login"), defaults,
                            SettingsKeys::hideOnLaunch, this);
    hidden->setContentsMargins(24, 0, 0, 0);
    enableWhileChecked(hidden, login);
    layout->addWidget(login);
    layout->addWidget(hidden);
    layout->addSpacing(8);
    layout->addWidget(boundBox(tr("Show a notification after removing data"), defaults,
                               SettingsKeys::displayNotifications, this));
    layout->addWidget(boundBox(tr("Also remove data where today's browsers keep it"), defaults,
                               SettingsKeys::cleanCurrentLayouts, this));
    layout->addWidget(note(tr("Newer Chromium and Firefox versions keep sessions, site storage and caches in "
                              "places older browsers did not. Bookmarks, passwords and extensions stay."),
                           this));
    layout->addWidget(
        boundBox(tr("Overwrite files before removing them"), defaults, SettingsKeys::secureDeleteData, this));
    layout->addWidget(note(tr("Slower. On SSDs and on copy-on-write file systems (Btrfs, ZFS) the old data "
                              "stays in blocks no program can reach, so overwriting cannot erase it there; "
                              "full-disk encryption protects it."),
                           this));
    layout->addSpacing(8);

    auto* sync = boundBox(tr("Share these settings with your other computers"), defaults,
                          SettingsKeys::iCloudSync, this);
    layout->addWidget(sync);
    auto* folderRow = new QHBoxLayout;
    folderRow->setContentsMargins(24, 0, 0, 0);
    m_syncFolderField->setPlaceholderText(tr("e.g. ~/Sync or ~/Nextcloud"));
    m_syncFolderField->setAccessibleName(tr("Synced folder"));
    m_syncFolderField->setClearButtonEnabled(true);
    m_chooseButton->setAccessibleName(tr("Choose the synced folder"));
    folderRow->addWidget(m_syncFolderField, 1);
    folderRow->addWidget(m_chooseButton);
    layout->addLayout(folderRow);
    m_syncFolderProblem->setWordWrap(true);
    m_syncFolderProblem->setContentsMargins(24, 0, 0, 0);
    m_syncFolderProblem->setAccessibleName(tr("Synced folder problem"));
    QPalette warning = m_syncFolderProblem->palette();
    warning.setColor(QPalette::WindowText, QColor(0xd0, 0x3a, 0x2f));
    m_syncFolderProblem->setPalette(warning);
    // Room for two lines of it is kept while it is hidden: the pane's height is fixed when first shown,
    // and a message appearing later would push the note below off the pane.
    m_syncFolderProblem->setMinimumHeight(2 * m_syncFolderProblem->fontMetrics().lineSpacing());
    QSizePolicy keepRoom = m_syncFolderProblem->sizePolicy();
    keepRoom.setRetainSizeWhenHidden(true);
    m_syncFolderProblem->setSizePolicy(keepRoom);
    m_syncFolderProblem->hide();
    layout->addWidget(m_syncFolderProblem);
    layout->addWidget(note(tr("Corvella keeps the shared settings in one file in this folder; your sync "
                              "tool carries it to your other computers."),
                           this));
    layout->addStretch();

    showStoredFolder();
    connect(m_syncFolderField, &QLineEdit::editingFinished, this,
            &GeneralPreferencesViewController::commitEditing);
    connect(m_chooseButton, &QPushButton::clicked, this, &GeneralPreferencesViewController::chooseSyncFolder);
    connect(&defaults, &UserDefaults::valueChanged, this, [this](const QString& key) {
        if (key == SettingsKeys::syncFolder)
            showStoredFolder();
    });
}

QString GeneralPreferencesViewController::paneIdentifier()
{
    //: Names the pane in the stored settings: keep it as it is.
    return tr("GeneralPreferences_en");
}

QIcon GeneralPreferencesViewController::toolbarItemImage() const
{
    return QIcon::fromTheme(QStringLiteral("preferences-system"),
                            QIcon(QStringLiteral(":/icons/general.svg")));
}

QString GeneralPreferencesViewController::toolbarItemLabel() const
{
    return tr("General");
}

void GeneralPreferencesViewController::showStoredFolder()
{
    m_syncFolderField->setText(m_defaults.stringForKey(SettingsKeys::syncFolder).value_or(QString()));
    m_syncFolderProblem->hide();
}

bool GeneralPreferencesViewController::commitEditing()
{
    const QString typed = m_syncFolderField->text().trimmed();
    if (typed == m_defaults.stringForKey(SettingsKeys::syncFolder).value_or(QString())) {
        m_syncFolderProblem->hide();
        return true;
    }
    QString folder;
    if (!typed.isEmpty()) {
        const auto check = SyncFolderKeyValueStore::checkFolder(typed, m_home);
        folder = check.kind == SyncFolderKeyValueStore::FolderCheck::Usable ? check.path : QString();
        if (folder.isEmpty()) {
            m_syncFolderProblem->setText(check.kind == SyncFolderKeyValueStore::FolderCheck::OutsideHome
                                             ? tr("Choose a folder inside your home folder.")
                                             : tr("There is no folder “%1”.").arg(typed));
            m_syncFolderProblem->show();
            m_syncFolderField->setFocus();
            return false;
        }
    }
    const bool saved = folder.isEmpty() ? m_defaults.removeObjectForKey(SettingsKeys::syncFolder)
                                        : m_defaults.setObject(folder, SettingsKeys::syncFolder);
    if (!saved) {
        m_syncFolderProblem->setText(tr("The folder could not be saved in the settings."));
        m_syncFolderProblem->show();
        return false;
    }
    showStoredFolder();
    return true;
}

void GeneralPreferencesViewController::chooseSyncFolder()
{
    const QString start = m_syncFolderField->text().isEmpty() ? m_home : m_syncFolderField->text();
    const QString chosen = QFileDialog::getExistingDirectory(window(), tr("Choose a Synced Folder"), start);
    if (chosen.isEmpty())
        return;
    m_syncFolderField->setText(chosen);
    commitEditing();
}

// Display ----------------------------------------------------------------------------------------------

DisplayPreferencesViewController::DisplayPreferencesViewController(UserDefaults& defaults, QWidget* parent)
    : PreferencesPane(parent)
{
    auto* layout = paneLayout(this);
    auto* tray = boundBox(tr("Show Corvella in the tray"), defaults, SettingsKeys::showInMenu, this);
    auto* taskBar =
        boundBox(tr("Keep the window out of the task bar"), defaults, SettingsKeys::hideDock, this);
    taskBar->setContentsMargins(24, 0, 0, 0);
    enableWhileChecked(taskBar, tray); // without the tray item the task bar is the way back to Corvella
    layout->addWidget(tray);
    layout->addWidget(taskBar);
    layout->addWidget(
        note(tr("Corvella goes on protecting your browsers while its window is closed."), this));
    layout->addStretch();
}

QString DisplayPreferencesViewController::identifier() const
{
    //: Names the pane in the stored settings: keep it as it is.
    return tr("DisplayPreferences_en");
}

QIcon DisplayPreferencesViewController::toolbarItemImage() const
{
    return QIcon::fromTheme(QStringLiteral("video-display"), QIcon(QStringLiteral(":/icons/display.svg")));
}

QString DisplayPreferencesViewController::toolbarItemLabel() const
{
    return tr("Display");
}

// Updates ----------------------------------------------------------------------------------------------

UpdatePreferencesViewController::UpdatePreferencesViewController(UserDefaults& defaults, QWidget* parent)
    : PreferencesPane(parent), m_defaults(defaults), m_observed{SettingsKeys::scheduledCheckInterval,
                                                                SettingsKeys::automaticallyUpdate,
                                                                SettingsKeys::enableAutomaticChecks},
      m_checkForUpdatesButton(new QCheckBox(tr("Check for updates automatically"), this)),
      m_checkScheduleButton(new QComboBox(this)),
      m_autoInstallButton(new QCheckBox(tr("Install updates automatically"), this))
{
    auto* layout = paneLayout(this);
    QLabel* explanation =
        note(tr("On this system Corvella is updated with your other software, by your "
                "package manager. These choices are kept with your settings and shared with "
                "your other computers."),
             this);
    explanation->setContentsMargins(0, 0, 0, 8);
    layout->addWidget(explanation);
    m_checkForUpdatesButton->setAccessibleName(m_checkForUpdatesButton->text());
    m_autoInstallButton->setAccessibleName(m_autoInstallButton->text());
    m_checkScheduleButton->setAccessibleName(tr("How often to check"));
    m_checkScheduleButton->addItem(tr("Daily"), 86400);
    m_checkScheduleButton->addItem(tr("Weekly"), 604800);
    m_checkScheduleButton->addItem(tr("Monthly"), 2629800);
    auto* schedule = new QHBoxLayout;
    schedule->addWidget(m_checkForUpdatesButton);
    schedule->addWidget(m_checkScheduleButton);
    schedule->addStretch();
    layout->addLayout(schedule);
    layout->addWidget(m_autoInstallButton);
    layout->addStretch();

    // What cannot be saved springs back to what is stored.
    const auto store = [this](const QVariant& value, const QString& key) {
        if (!m_defaults.setObject(value, key))
            observeValueForKeyPath(key);
    };
    connect(m_checkForUpdatesButton, &QCheckBox::toggled, this,
            [store](bool on) { store(on, SettingsKeys::enableAutomaticChecks); });
    connect(m_autoInstallButton, &QCheckBox::toggled, this,
            [store](bool on) { store(on, SettingsKeys::automaticallyUpdate); });
    connect(m_checkScheduleButton, &QComboBox::activated, this, [this, store](int index) {
        store(m_checkScheduleButton->itemData(index), SettingsKeys::scheduledCheckInterval);
    });
    connect(&defaults, &UserDefaults::valueChanged, this,
            [this](const QString& key) { observeValueForKeyPath(key); });
    for (const QString& key : std::as_const(m_observed))
        observeValueForKeyPath(key);
}

UpdatePreferencesViewController::~UpdatePreferencesViewController()
{
    stopObserving();
}

void UpdatePreferencesViewController::stopObserving()
{
    // The automatic-check key is let go under a name one letter short, as Corvella always has: that switch
    // keeps following its key for as long as the pane exists.
    for (const char* key : {"SUScheduledCheckInterval", "SUAutomaticallyUpdate", "SUEnableAutomaticCheck"})
        m_observed.remove(QString::fromLatin1(key));
}

void UpdatePreferencesViewController::observeValueForKeyPath(const QString& keyPath)
{
    if (!m_observed.contains(keyPath))
        return;
    const QSignalBlocker quietChecks(m_checkForUpdatesButton), quietInstall(m_autoInstallButton);
    if (keyPath == SettingsKeys::enableAutomaticChecks)
        m_checkForUpdatesButton->setChecked(m_defaults.boolForKey(keyPath));
    if (keyPath == SettingsKeys::scheduledCheckInterval)
        m_checkScheduleButton->setCurrentIndex(
            m_checkScheduleButton->findData(QVariant(m_defaults.integerForKey(keyPath))));
    if (keyPath == SettingsKeys::automaticallyUpdate)
        m_autoInstallButton->setChecked(m_defaults.boolForKey(keyPath));
}

QString UpdatePreferencesViewController::identifier() const
{
    //: Names the pane in the stored settings: keep it as it is.
    return tr("UpdatePreferences_en");
}

QIcon UpdatePreferencesViewController::toolbarItemImage() const
{
    return QIcon::fromTheme(QStringLiteral("system-software-update"),
                            QIcon(QStringLiteral(":/icons/update.svg")));
}

QString UpdatePreferencesViewController::toolbarItemLabel() const
{
    return tr("Updates");
}

// About ------------------------------------------------------------------------------------------------

AboutPreferencesViewController::AboutPreferencesViewController(QWidget* parent)
    : PreferencesPane(parent), m_creditsView(new QTextBrowser(this))
{
    auto* layout = paneLayout(this);
    m_creditsView->setAccessibleName(tr("Credits"));
    m_creditsView->setOpenExternalLinks(true);
    m_creditsView->setFrameShape(QFrame::NoFrame);
    m_creditsView->viewport()->setAutoFillBackground(false);
    // The credits in the first of the user's languages that has them ("Credits_de.html"); English is
    // the plain file.
    QString creditsFile = QStringLiteral(":/Credits.html");
    for (const QString& language : QLocale().uiLanguages()) {
        const QString prefix = language.section(u'-', 0, 0);
        const QString candidate = QStringLiteral(":/Credits_%1.html").arg(prefix);
        if (prefix == QLatin1String("en"))
            break;
        if (QFile::exists(candidate)) {
            creditsFile = candidate;
            break;
        }
    }
    QFile credits(creditsFile);
    QString text = credits.open(QIODevice::ReadOnly) ? QString::fromUtf8(credits.readAll()) : QString();
    const qsizetype placeholder = text.indexOf(QLatin1String("versionString"));
    if (placeholder >= 0)
        text.replace(placeholder, 13, tr("v%1").arg(QCoreApplication::applicationVersion()));
    m_creditsView->append(text);
    m_creditsView->setMinimumHeight(150);
    layout->addWidget(m_creditsView, 1);

    auto* links = new QHBoxLayout;
    auto* home = new QPushButton(tr("Home Page"), this);
    auto* issues = new QPushButton(tr("Report a Problem"), this);
    home->setAccessibleName(tr("Open Corvella's home page"));
    issues->setAccessibleName(tr("Open Corvella's issue tracker"));
    links->addStretch();
    links->addWidget(home);
    links->addWidget(issues);
    layout->addLayout(links);
    connect(home, &QPushButton::clicked, this, [] { QDesktopServices::openUrl(homePage()); });
    connect(issues, &QPushButton::clicked, this, [] { QDesktopServices::openUrl(issueTracker()); });
}

QString AboutPreferencesViewController::identifier() const
{
    //: Names the pane in the stored settings: keep it as it is.
    return tr("AboutPreferences_en");
}

QIcon AboutPreferencesViewController::toolbarItemImage() const
{
    return QIcon::fromTheme(QStringLiteral("help-about"), QIcon(QStringLiteral(":/icons/about.svg")));
}

QString AboutPreferencesViewController::toolbarItemLabel() const
{
    return tr("About");
}

QUrl AboutPreferencesViewController::homePage()
{
    return QUrl(QStringLiteral(CORVELLA_HOMEPAGE_URL));
}

QUrl AboutPreferencesViewController::issueTracker()
{
    return QUrl(QStringLiteral(CORVELLA_ISSUES_URL));
}
