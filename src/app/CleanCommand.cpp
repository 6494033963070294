#include "app/CleanCommand.h"

#include "catalogue/BrowserCatalogue.h"
#include "cleaners/BrowserCleaners.h"
#include "cleaners/KeptSites.h"
#include "core/RemovalRun.h"
#include "core/SettingsController.h"
#include "platform/OpenPanel.h"
#include "platform/PathLayout.h"
#include "platform/SettingsKeys.h"
#include "platform/UserDefaults.h"
#include "sandbox/AppSandboxFileAccess.h"
#include "sandbox/ProblemReport.h"
#include "sandbox/RemovalPreview.h"
#include "sandbox/Sandbox.h"

#include <QLocale>

#include <algorithm>

namespace {

QString usage()
{
    return CleanCommand::tr("usage: corvella-clean [--preview] [--allow-home-access] [--keep SITE ...] "
                            "BROWSER [CATEGORY ...]\n"
                            "       corvella-clean [--allow-home-access] --list\n"
                            "       corvella-clean --help | --version");
}

// Safari only where its files can be (the macOS layout, which tests ask for with --layout and which is
// not advertised).
QStringList browsersOffered(const QString& layout)
{
    QStringList browsers = BrowserCatalogue::browserKeys();
    if (layout != PathLayout::macOS)
        browsers.removeAll(BrowserCatalogue::safari);
    return browsers;
}

QString help()
{
    return usage() + QLatin1Char('\n') +
           CleanCommand::tr(
               "\nRemoves the data you chose for a browser, as Corvella does when the browser quits.\n\n"
               "  --list               show each browser, whether it is installed and activated, and its "
               "profiles\n"
               "  --preview            show what would be removed or changed; change nothing\n"
               "  --keep SITE          keep this site's cookies and site data too (a host name, with its "
               "subdomains; repeatable)\n"
               "  --allow-home-access  grant access to the home folder without asking\n"
               "  -h, --help           show this help\n"
               "  --version            show the version\n\n"
               "BROWSER: %1\n"
               "CATEGORY: %2 (none: the categories chosen in Corvella)\n\n"
               "See corvella-clean(1) for the exit status and examples.")
               .arg(browsersOffered(PathLayout::platformDefault()).join(QStringLiteral(", ")),
                    SettingsKeys::categories.join(QStringLiteral(", ")));
}

// The home-folder grant from the terminal: given up front by --allow-home-access, or asked once.
class TerminalOpenPanel final : public OpenPanel
{
public:
    TerminalOpenPanel(bool allow, const std::function<std::optional<bool>(const QString&)>& ask)
        : m_allow(allow), m_ask(ask)
    {}

    std::optional<QUrl> runModal(const OpenPanelRequest& request) override
    {
        const QUrl folder = QUrl::fromLocalFile(request.directory);
        if (request.shouldEnable && !request.shouldEnable(folder))
            return std::nullopt;
        if (!m_allow && !m_refused && m_ask) {
            const std::optional<bool> answer = m_ask(
                CleanCommand::tr(
                    "Corvella needs access to your home folder (%1) to remove browser data. Allow? [y/N] ")
                    .arg(request.directory));
            m_allow = answer.value_or(false);
            m_refused = !m_allow;
        }
        return m_allow ? std::optional(folder) : std::nullopt;
    }

private:
    bool m_allow;
    bool m_refused = false;
    std::function<std::optional<bool>(const QString&)> m_ask;
};

class PrintedPreview final : public RemovalPreview
{
public:
    explicit PrintedPreview(QTextStream& out) : m_out(out) {}
    void record(const QString& action, const QString& path, qint64 bytes, const QString& detail) override
    {
        const QString shown = QCoreApplication::translate("RemovalPreview", action.toUtf8().constData());
        m_out << CleanCommand::tr("%1 %2 (%3)").arg(shown, path, QLocale().formattedDataSize(bytes));
        if (!detail.isEmpty())
            m_out << ": " << detail;
        m_out << Qt::endl;
        ++count;
    }
    int count = 0;

private:
    QTextStream& m_out;
};

} // namespace

CleanCommand::CleanCommand(const CleanServices& services) : m_services(services) {}

int CleanCommand::usageError(const QString& message)
{
    m_services.err << "corvella-clean: " << message << Qt::endl;
    return BadUsage;
}

std::optional<CleanCommand::Options> CleanCommand::parse(const QStringList& arguments)
{
    Options options;
    QStringList positional;
    bool optionsEnded = false;
    // An option's value: after "=" in the same argument, or the next argument; none: the message.
    const auto valueOf = [&](qsizetype& i, const QString& missing) -> std::optional<QString> {
        const QString& argument = arguments.at(i);
        if (argument.contains(QLatin1Char('=')))
            return argument.section(QLatin1Char('='), 1);
        if (i + 1 >= arguments.size()) {
            usageError(missing);
            return std::nullopt;
        }
        return arguments.at(++i);
    };
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments.at(i);
        if (optionsEnded) {
            positional.append(argument);
        } else if (argument == QLatin1String("--")) {
            optionsEnded = true;
        } else if (argument == QLatin1String("--list")) {
            options.list = true;
        } else if (argument == QLatin1String("--preview")) {
            options.preview = true;
        } else if (argument == QLatin1String("--allow-home-access")) {
            options.allowHomeAccess = true;
        } else if (argument == QLatin1String("--keep") || argument.startsWith(QLatin1String("--keep="))) {
            const std::optional<QString> site =
                valueOf(i, tr("--keep needs a site: a host name such as example.com"));
            if (!site)
                return std::nullopt;
            const std::optional<QString> kept = KeptSites::normalised(*site);
            if (!kept) {
                usageError(tr("\"%1\" is no site to keep; give a host name such as example.com, an IP "
                              "address or localhost")
                               .arg(*site));
                return std::nullopt;
            }
            options.keep.append(*kept);
        } else if (argument == QLatin1String("--layout") || argument.startsWith(QLatin1String("--layout="))) {
            const std::optional<QString> layout = valueOf(i, tr("--layout needs a value: macOS or Linux"));
            if (!layout)
                return std::nullopt;
            if (*layout != PathLayout::macOS && *layout != PathLayout::linux_) {
                usageError(tr("unknown layout \"%1\"; accepted: macOS, Linux").arg(*layout));
                return std::nullopt;
            }
            options.layout = *layout;
        } else if (argument.startsWith(QLatin1Char('-')) && argument.size() > 1) {
            usageError(tr("unknown option \"%1\"; accepted: --list, --preview, --keep, --allow-home-access, "
                          "--help, --version")
                           .arg(argument));
            return std::nullopt;
        } else {
            positional.append(argument);
        }
    }
    const QString browsers =
        browsersOffered(options.layout.value_or(PathLayout::platformDefault())).join(QStringLiteral(", "));
    if (options.list) {
        if (!positional.isEmpty()) {
            usageError(tr("--list takes no browser or category"));
            return std::nullopt;
        }
        return options;
    }
    if (positional.isEmpty()) {
        usageError(tr("name a browser: %1").arg(browsers) + QLatin1Char('\n') + usage());
        return std::nullopt;
    }
    // Names are matched without regard to case ("chromium", "google chrome"), as people type them.
    const auto known = [](const QStringList& keys, const QString& typed) {
        for (const QString& key : keys) {
            if (key.compare(typed, Qt::CaseInsensitive) == 0)
                return key;
        }
        return QString();
    };
    const QString typedBrowser = positional.takeFirst();
    options.browser = known(BrowserCatalogue::browserKeys(), typedBrowser);
    if (options.browser.isEmpty()) {
        usageError(tr("unknown browser \"%1\"; accepted: %2").arg(typedBrowser, browsers));
        return std::nullopt;
    }
    for (const QString& typed : std::as_const(positional)) {
        const QString category = known(SettingsKeys::categories, typed);
        if (category.isEmpty()) {
            usageError(tr("unknown category \"%1\"; accepted: %2")
                           .arg(typed, SettingsKeys::categories.join(QStringLiteral(", "))));
            return std::nullopt;
        }
        options.categories.append(category);
    }
    return options;
}

int CleanCommand::run(const QStringList& arguments)
{
    const QStringList beforeDashes = arguments.mid(0, arguments.indexOf(QLatin1String("--")));
    if (beforeDashes.contains(QLatin1String("--help")) || beforeDashes.contains(QLatin1String("-h"))) {
        m_services.out << help() << Qt::endl;
        return finish(Success);
    }
    if (beforeDashes.contains(QLatin1String("--version"))) {
        m_services.out << "corvella-clean " CORVELLA_VERSION << Qt::endl;
        return finish(Success);
    }
    const std::optional<Options> options = parse(arguments);
    if (!options)
        return BadUsage;
    if (options->layout)
        m_services.defaults.setArgument(*options->layout, SettingsKeys::browserLayout);

    // --list never asks: it shows profiles only when access is already held or granted by the option.
    TerminalOpenPanel panel(options->allowHomeAccess, options->list ? nullptr : m_services.ask);
    PrintedPreview preview(m_services.out);
    ProblemReport problems;
    Sandbox sandbox({m_services.defaults, m_services.bookmarks, panel, m_services.log,
                     options->preview ? &preview : nullptr, &problems});
    BrowserCatalogue catalogue(m_services.workspace, m_services.defaults, sandbox);
    const QString home = sandbox.checkForUserDirectory(QStringLiteral("~"));
    if (options->list) {
        const int listed = list(sandbox, catalogue);
        return finish(options->allowHomeAccess && !grantWasSaved(home, panel) ? NotWritten : listed);
    }
    if (!sandbox.enableAccess()) {
        m_services.err << "corvella-clean: "
                       << tr("no access to the home folder %1. Grant it once with \"corvella-clean "
                             "--allow-home-access %2\", or run corvella-clean in a terminal and answer y.")
                              .arg(sandbox.checkForUserDirectory(QStringLiteral("~")), options->browser)
                       << Qt::endl;
        return NoHomeAccess;
    }
    int result = clean(*options, sandbox, catalogue);
    if (result == Success && options->preview && preview.count == 0)
        m_services.out << tr("Nothing would be removed from %1.").arg(options->browser) << Qt::endl;
    if (const QStringList lines = problems.lines(); !lines.isEmpty())
        m_services.err << "corvella-clean: "
                       << tr("warning: %n item(s) left as they were; the first: %1", nullptr,
                             int(lines.size()))
                              .arg(lines.first())
                       << Qt::endl;
    if (!grantWasSaved(home, panel))
        result = result == Success ? NotWritten : result;
    return finish(result);
}

// Output that could not be written (a full disk, a closed pipe) must not pass for success.
int CleanCommand::finish(int code)
{
    m_services.out.flush();
    if (m_services.out.status() == QTextStream::Ok)
        return code;
    m_services.err << "corvella-clean: " << tr("the output could not be written.") << Qt::endl;
    return code == Success ? NotWritten : code;
}

int CleanCommand::list(Sandbox& sandbox, BrowserCatalogue& catalogue)
{
    // Checked without asking; with --allow-home-access the grant is recorded here.
    const QString home = sandbox.checkForUserDirectory(QStringLiteral("~"));
    const bool access = sandbox.hasAccess();
    const QStringList installed = catalogue.checkForInstalledBrowsers();
    // Columns as wide as their longest word in the user's language.
    const QString installedWords[] = {tr("installed"), tr("not installed")};
    const QString activatedWords[] = {tr("activated"), tr("not activated")};
    const auto width = [](const QString(&words)[2]) { return std::max(words[0].size(), words[1].size()); };
    const QStringList offered = browsersOffered(sandbox.layout());
    // A browser's profiles as the list shows them: Chromium's with the names the user gave them.
    const auto profilesOf = [&](const QString& browser) {
        QStringList profiles;
        if (BrowserCatalogue::hasSingleProfile(browser)) {
            if (!BrowserCatalogue::installsOf(sandbox, browser).isEmpty())
                profiles.append(browser);
        } else if (BrowserCatalogue::isChromiumFamily(browser)) {
            const QVariantMap map = catalogue.userProfiles(browser);
            for (auto it = map.cbegin(); it != map.cend(); ++it)
                profiles.append(QStringLiteral("%1 (%2)").arg(it.key(), it.value().toString()));
        } else if (BrowserCatalogue::isFirefoxFamily(browser)) {
            profiles = catalogue.firefoxProfiles(browser);
        }
        return profiles;
    };
    qsizetype nameWidth = 0;
    for (const QString& browser : offered)
        nameWidth = std::max(nameWidth, browser.size() + 2);
    for (const QString& id : BrowserCatalogue::detectionOrder()) {
        const QString browser = BrowserCatalogue::browserForID(id);
        if (!offered.contains(browser))
            continue;
        QString line = browser.leftJustified(nameWidth) +
                       installedWords[installed.contains(id) ? 0 : 1].leftJustified(width(installedWords)) +
                       QStringLiteral("  ") +
                       activatedWords[catalogue.checkIfBrowserEnabled(browser) ? 0 : 1].leftJustified(
                           width(activatedWords));
        // Nothing is read without the grant.
        const QStringList profiles = access ? profilesOf(browser) : QStringList();
        if (!profiles.isEmpty())
            line += QStringLiteral("  ") + tr("profiles: %1").arg(profiles.join(QStringLiteral(", ")));
        m_services.out << line.trimmed() << Qt::endl;
    }
    QStringList kept;
    for (const QVariant& site : m_services.defaults.arrayForKey(SettingsKeys::keptSites))
        kept.append(site.toString());
    m_services.out << (kept.isEmpty() ? tr("Kept sites: none")
                                      : tr("Kept sites: %1").arg(kept.join(QStringLiteral(", "))))
                   << Qt::endl;
    if (!access)
        m_services.out << tr("Profiles are not shown: Corvella has no access to %1 (grant it with "
                             "\"corvella-clean --allow-home-access --list\").")
                              .arg(home)
                       << Qt::endl;
    return Success;
}

// A grant given for this run (by the option or the terminal) that the settings did not take means
// asking again next time: the command failed.
bool CleanCommand::grantWasSaved(const QString& home, OpenPanel& panel)
{
    if (AppSandboxFileAccess::fileAccess({m_services.defaults, m_services.bookmarks, panel})
            .hasPermissionForFilePath(home))
        return true;
    m_services.err << "corvella-clean: "
                   << tr("warning: the access to %1 could not be saved in the settings (see the log); "
                         "you will be asked again.")
                          .arg(home)
                   << Qt::endl;
    return false;
}

int CleanCommand::clean(const Options& options, Sandbox& sandbox, BrowserCatalogue& catalogue)
{
    QVariantMap choices;
    if (options.categories.isEmpty()) {
        choices =
            SettingsController::selectedEntries(m_services.defaults.dictionaryForKey(SettingsKeys::settings));
    } else {
        for (const QString& category : options.categories)
            choices.insert(SettingsKeys::settingsKey(options.browser, category), true);
    }
    BrowserCleaners cleaners({sandbox, catalogue, m_services.defaults, m_services.log, options.keep});
    RemovalRunServices run{cleaners, catalogue, m_services.log, m_services.lockPath};
    run.lockWait.timeoutMs = m_services.lockTimeoutMs;
    run.lockWait.waiting = [this] {
        m_services.err << "corvella-clean: "
                       << tr("waiting for another removal run to finish (at most %1 s)...")
                              .arg(m_services.lockTimeoutMs / 1000)
                       << Qt::endl;
    };
    // A preview changes nothing, so a running browser is no reason to refuse it.
    run.refuseRunningBrowser = !options.preview;
    run.stop = &sandbox.runStop();
    const RunOutcome outcome = RemovalRun::perform(
        options.browser, [&] { return choices; }, run);
    switch (outcome.status) {
    case RunOutcome::BrowserRunning:
        m_services.err << "corvella-clean: "
                       << tr("%1 is running; quit it first. Nothing was changed.").arg(options.browser)
                       << Qt::endl;
        return BrowserRunning;
    case RunOutcome::BrowserStarted:
        m_services.err << "corvella-clean: "
                       << tr("%1 started during the run, which stopped before changing its files again. Run "
                             "it again once %1 has quit.")
                              .arg(options.browser)
                       << Qt::endl;
        return BrowserRunning;
    case RunOutcome::LockNotTaken:
        m_services.err << "corvella-clean: "
                       << tr("another removal run did not finish within %1 s. Nothing was changed; try "
                             "again later.")
                              .arg(m_services.lockTimeoutMs / 1000)
                       << Qt::endl;
        return LockBusy;
    case RunOutcome::NoAccess:
        return NoHomeAccess; // not reached: access was obtained before the run
    case RunOutcome::Done:
        break;
    }
    if (options.preview && catalogue.browserIsRunning(options.browser))
        m_services.out
            << tr("%1 is running: a run would refuse to touch it until it quits.").arg(options.browser)
            << Qt::endl;
    if (!options.preview)
        m_services.out << RemovalRun::notificationText(options.browser, outcome.labels) << Qt::endl;
    return Success;
}
