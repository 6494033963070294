#include "app/CleanCommand.h"

#include "cleaners/BrowserCleaners.h"
#include "core/BrowserCatalogue.h"
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

namespace {

const QString kUsage = QStringLiteral(
    "usage: corvella-clean [--preview] [--layout macOS|Linux] [--allow-home-access] BROWSER [CATEGORY ...]\n"
    "       corvella-clean [--allow-home-access] --list");

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
                QStringLiteral(
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
        m_out << action << ' ' << path << " (" << bytes << " bytes)";
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
        } else if (argument == QLatin1String("--layout") || argument.startsWith(QLatin1String("--layout="))) {
            const bool inline_ = argument.contains(QLatin1Char('='));
            if (!inline_ && i + 1 >= arguments.size()) {
                usageError(QStringLiteral("--layout needs a value: macOS or Linux"));
                return std::nullopt;
            }
            const QString layout = inline_ ? argument.section(QLatin1Char('='), 1) : arguments.at(++i);
            if (layout != PathLayout::macOS && layout != PathLayout::linux_) {
                usageError(QStringLiteral("unknown layout \"%1\"; accepted: macOS, Linux").arg(layout));
                return std::nullopt;
            }
            options.layout = layout;
        } else if (argument.startsWith(QLatin1Char('-')) && argument.size() > 1) {
            usageError(
                QStringLiteral("unknown option \"%1\"; accepted: --list, --preview, --layout macOS|Linux, "
                               "--allow-home-access")
                    .arg(argument));
            return std::nullopt;
        } else {
            positional.append(argument);
        }
    }
    const QString browsers = BrowserCatalogue::browserKeys().join(QStringLiteral(", "));
    if (options.list) {
        if (!positional.isEmpty()) {
            usageError(QStringLiteral("--list takes no browser or category"));
            return std::nullopt;
        }
        return options;
    }
    if (positional.isEmpty()) {
        usageError(QStringLiteral("name a browser: %1\n%2").arg(browsers, kUsage));
        return std::nullopt;
    }
    options.browser = positional.takeFirst();
    if (!BrowserCatalogue::browserKeys().contains(options.browser)) {
        usageError(QStringLiteral("unknown browser \"%1\"; accepted: %2").arg(options.browser, browsers));
        return std::nullopt;
    }
    for (const QString& category : std::as_const(positional)) {
        if (!SettingsKeys::categories.contains(category)) {
            usageError(QStringLiteral("unknown category \"%1\"; accepted: %2")
                           .arg(category, SettingsKeys::categories.join(QStringLiteral(", "))));
            return std::nullopt;
        }
    }
    options.categories = positional;
    return options;
}

int CleanCommand::run(const QStringList& arguments)
{
    const QStringList beforeDashes = arguments.mid(0, arguments.indexOf(QLatin1String("--")));
    if (beforeDashes.contains(QLatin1String("--help")) || beforeDashes.contains(QLatin1String("-h"))) {
        m_services.out << kUsage << Qt::endl;
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
    if (options->list)
        return finish(list(sandbox, catalogue));
    if (!sandbox.enableAccess()) {
        m_services.err << "corvella-clean: no access to the home folder "
                       << sandbox.checkForUserDirectory(QStringLiteral("~"))
                       << ". Grant it once with \"corvella-clean --allow-home-access " << options->browser
                       << "\", or run corvella-clean in a terminal and answer y." << Qt::endl;
        return NoHomeAccess;
    }
    // Access was given for this run; a grant that could not be saved means asking again next time.
    const QString home = sandbox.checkForUserDirectory(QStringLiteral("~"));
    const bool grantSaved =
        AppSandboxFileAccess::fileAccess({m_services.defaults, m_services.bookmarks, panel})
            .hasPermissionForFilePath(home);
    int result = clean(*options, sandbox, catalogue);
    if (result == Success && options->preview && preview.count == 0)
        m_services.out << "Nothing would be removed from " << options->browser << '.' << Qt::endl;
    if (const QStringList lines = problems.lines(); !lines.isEmpty())
        m_services.err << "corvella-clean: warning: " << lines.size()
                       << (lines.size() == 1 ? " item was" : " items were")
                       << " left as they were; the first: " << lines.first() << Qt::endl;
    if (!grantSaved) {
        m_services.err << "corvella-clean: warning: the access to " << home
                       << " could not be saved in the settings (see the log); you will be asked again."
                       << Qt::endl;
        result = result == Success ? NotWritten : result;
    }
    return finish(result);
}

// Output that could not be written (a full disk, a closed pipe) must not pass for success.
int CleanCommand::finish(int code)
{
    m_services.out.flush();
    if (m_services.out.status() == QTextStream::Ok)
        return code;
    m_services.err << "corvella-clean: the output could not be written." << Qt::endl;
    return code == Success ? NotWritten : code;
}

int CleanCommand::list(Sandbox& sandbox, BrowserCatalogue& catalogue)
{
    // Checked without asking; with --allow-home-access the grant is recorded here.
    const QString home = sandbox.checkForUserDirectory(QStringLiteral("~"));
    const bool access = sandbox.hasAccess();
    const QStringList installed = catalogue.checkForInstalledBrowsers();
    for (const QString& id : BrowserCatalogue::detectionOrder()) {
        const QString browser = BrowserCatalogue::browserForID(id);
        QString line =
            browser.leftJustified(15) +
            (installed.contains(id) ? QStringLiteral("installed    ") : QStringLiteral("not installed")) +
            QStringLiteral("  ") +
            (catalogue.checkIfBrowserEnabled(browser) ? QStringLiteral("activated    ")
                                                      : QStringLiteral("not activated"));
        QStringList profiles;
        if (access && (browser == BrowserCatalogue::googleChrome || browser == BrowserCatalogue::chromium)) {
            const QVariantMap map = catalogue.userProfiles(browser);
            for (auto it = map.cbegin(); it != map.cend(); ++it)
                profiles.append(QStringLiteral("%1 (%2)").arg(it.key(), it.value().toString()));
        } else if (access && browser == BrowserCatalogue::firefox) {
            profiles = catalogue.firefoxProfiles();
        } else if (access && browser == BrowserCatalogue::opera &&
                   sandbox.fileIsDirectory(BrowserCatalogue::operaDataRoot)) {
            profiles.append(QStringLiteral("Opera"));
        }
        if (!profiles.isEmpty())
            line += QStringLiteral("  profiles: ") + profiles.join(QStringLiteral(", "));
        m_services.out << line.trimmed() << Qt::endl;
    }
    if (!access)
        m_services.out << "Profiles are not shown: Corvella has no access to " << home
                       << " (grant it with \"corvella-clean --allow-home-access --list\")." << Qt::endl;
    return Success;
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
    BrowserCleaners cleaners({sandbox, catalogue, m_services.defaults, m_services.log});
    RemovalRunServices run{cleaners, catalogue, m_services.log, m_services.lockPath};
    run.lockWait.timeoutMs = m_services.lockTimeoutMs;
    run.lockWait.waiting = [this] {
        m_services.err << "corvella-clean: waiting for another removal run to finish (at most "
                       << m_services.lockTimeoutMs / 1000 << " s)..." << Qt::endl;
    };
    // A preview changes nothing, so a running browser is no reason to refuse it.
    run.refuseRunningBrowser = !options.preview;
    const RunOutcome outcome = RemovalRun::perform(
        options.browser, [&] { return choices; }, run);
    switch (outcome.status) {
    case RunOutcome::BrowserRunning:
        m_services.err << "corvella-clean: " << options.browser
                       << " is running; quit it first. Nothing was changed." << Qt::endl;
        return BrowserRunning;
    case RunOutcome::LockNotTaken:
        m_services.err << "corvella-clean: another removal run did not finish within "
                       << m_services.lockTimeoutMs / 1000 << " s. Nothing was changed; try again later."
                       << Qt::endl;
        return LockBusy;
    case RunOutcome::NoAccess:
        return NoHomeAccess; // not reached: access was obtained before the run
    case RunOutcome::Done:
        break;
    }
    if (options.preview && catalogue.browserIsRunning(options.browser))
        m_services.out << options.browser << " is running: a run would refuse to touch it until it quits."
                       << Qt::endl;
    if (!options.preview)
        m_services.out << RemovalRun::notificationText(options.browser, outcome.labels) << Qt::endl;
    return Success;
}
