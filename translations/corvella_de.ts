<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>AboutPreferencesViewController</name>
    <message>
        <source>Credits</source>
        <translation>Mitwirkende</translation>
    </message>
    <message>
        <source>v%1</source>
        <translation>v%1</translation>
    </message>
    <message>
        <source>Home Page</source>
        <translation>Homepage</translation>
    </message>
    <message>
        <source>Report a Problem</source>
        <translation>Problem melden</translation>
    </message>
    <message>
        <source>Open Corvella&apos;s home page</source>
        <translation>Die Homepage von Corvella öffnen</translation>
    </message>
    <message>
        <source>Open Corvella&apos;s issue tracker</source>
        <translation>Die Fehlerverwaltung von Corvella öffnen</translation>
    </message>
    <message>
        <source>AboutPreferences_en</source>
        <extracomment>Names the pane in the stored settings: keep it as it is.</extracomment>
        <translation>AboutPreferences_en</translation>
    </message>
    <message>
        <source>About</source>
        <translation>Über</translation>
    </message>
</context>
<context>
    <name>AccessRequestDialog</name>
    <message>
        <source>Folder: %1</source>
        <translation>Ordner: %1</translation>
    </message>
    <message>
        <source>Allow</source>
        <translation>Erlauben</translation>
    </message>
    <message>
        <source>Choose Another Folder…</source>
        <translation>Anderen Ordner wählen…</translation>
    </message>
    <message>
        <source>Choose Another Folder</source>
        <translation>Anderen Ordner wählen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>AgentMain</name>
    <message>
        <source>usage: corvella [URL]
       corvella --help | --version

Starts Corvella, which removes the data you chose for a browser when the browser quits.
It lives in the tray; started again, it shows the running agent&apos;s window.
A URL (com.tovanex.corvella.scripts:) is handed to the running agent.

See corvella(1); for the command line, corvella-clean(1).</source>
        <translation>Aufruf: corvella [URL]
        corvella --help | --version

Startet Corvella, das die für einen Browser gewählten Daten entfernt, wenn der Browser beendet wird.
Corvella lebt im Systembereich der Kontrollleiste; erneut gestartet, zeigt es das Fenster des laufenden Agenten.
Eine URL (com.tovanex.corvella.scripts:) wird an den laufenden Agenten übergeben.

Siehe corvella(1); für die Befehlszeile corvella-clean(1).</translation>
    </message>
    <message>
        <source>unknown option &quot;%1&quot;; accepted: --help, --version</source>
        <translation>unbekannte Option „%1“; möglich sind: --help, --version</translation>
    </message>
    <message>
        <source>no browser is activated yet</source>
        <translation>noch ist kein Browser aktiviert</translation>
    </message>
    <message>
        <source>protection is on for %1</source>
        <translation>Schutz ist eingeschaltet für %1</translation>
    </message>
    <message>
        <source>protection is off for %1</source>
        <translation>Schutz ist ausgeschaltet für %1</translation>
    </message>
    <message>
        <source>the agent is already running (pid %1); handed over to it.</source>
        <translation>der Agent läuft bereits (PID %1); an ihn übergeben.</translation>
    </message>
    <message>
        <source>the agent is already running; handed over to it.</source>
        <translation>der Agent läuft bereits; an ihn übergeben.</translation>
    </message>
    <message>
        <source>no display (Qt platform &quot;%1&quot;): running headless, without a status item.</source>
        <translation>keine Anzeige (Qt-Plattform „%1“): läuft ohne Oberfläche und ohne Symbol in der Kontrollleiste.</translation>
    </message>
    <message>
        <source>running (started at login); %1. Settings: %2</source>
        <translation>läuft (bei der Anmeldung gestartet); %1. Einstellungen: %2</translation>
    </message>
    <message>
        <source>running; %1. Settings: %2</source>
        <translation>läuft; %1. Einstellungen: %2</translation>
    </message>
    <message>
        <source>%1 is not a private folder of yours (a folder you own with mode 0700), so another user could pose as the agent there. Remove it, or start Corvella in a desktop session (XDG_RUNTIME_DIR).</source>
        <translation>%1 ist kein privater Ordner von Ihnen (ein Ordner, der Ihnen gehört, mit den Rechten 0700), daher könnte sich dort ein anderer Benutzer als der Agent ausgeben. Entfernen Sie ihn, oder starten Sie Corvella in einer Desktop-Sitzung (XDG_RUNTIME_DIR).</translation>
    </message>
</context>
<context>
    <name>AppDelegate</name>
    <message>
        <source>Corvella has no access to your home folder, so nothing was removed from %1. Open Corvella and click &quot;Grant Access…&quot; (or run &quot;corvella-clean --allow-home-access --list&quot;).</source>
        <translation>Corvella hat keinen Zugriff auf Ihren persönlichen Ordner, daher wurde nichts aus %1 entfernt. Öffnen Sie Corvella und klicken Sie auf „Zugriff gewähren…“ (oder führen Sie „corvella-clean --allow-home-access --list“ aus).</translation>
    </message>
</context>
<context>
    <name>AppSandboxFileAccess</name>
    <message>
        <source>Allow Access</source>
        <translation>Zugriff erlauben</translation>
    </message>
    <message>
        <source>%1 needs to access this path to continue. Click Allow to continue.</source>
        <translation>%1 benötigt Zugriff auf diesen Pfad, um fortzufahren. Klicken Sie auf „Erlauben“, um fortzufahren.</translation>
    </message>
    <message>
        <source>Allow</source>
        <translation>Erlauben</translation>
    </message>
</context>
<context>
    <name>BrowserCollection</name>
    <message>
        <source>Browsers</source>
        <translation>Browser</translation>
    </message>
    <message>
        <source>%1, not protected</source>
        <translation>%1, nicht geschützt</translation>
    </message>
    <message>
        <source>%1, protected</source>
        <translation>%1, geschützt</translation>
    </message>
</context>
<context>
    <name>BrowserPopover</name>
    <message>
        <source>Browser settings</source>
        <translation>Browser-Einstellungen</translation>
    </message>
    <message>
        <source>PopoverWindowWidth</source>
        <translation>340</translation>
    </message>
    <message>
        <source>Please activate any Browsers you wish to protect here</source>
        <translation>Aktivieren Sie hier die Browser, die Sie schützen möchten</translation>
    </message>
    <message>
        <source>Click to activate protection for</source>
        <translation>Klicken, um den Schutz einzuschalten:</translation>
    </message>
    <message>
        <source>Click to change settings for</source>
        <translation>Klicken, um die Einstellungen zu ändern:</translation>
    </message>
    <message>
        <source>Protect %1</source>
        <translation>%1 schützen</translation>
    </message>
    <message>
        <source>Last cleaned %1</source>
        <translation>Zuletzt bereinigt: %1</translation>
    </message>
    <message>
        <source>Not cleaned yet</source>
        <translation>Noch nicht bereinigt</translation>
    </message>
    <message>
        <source>Kept sites</source>
        <translation>Behaltene Websites</translation>
    </message>
    <message>
        <source>The sites whose cookies and site data every clean keeps</source>
        <translation>Die Websites, deren Cookies und Website-Daten jede Bereinigung behält</translation>
    </message>
    <message>
        <source>Kept sites: %1…</source>
        <translation>Behaltene Websites: %1…</translation>
    </message>
</context>
<context>
    <name>CleanCommand</name>
    <message>
        <source>Corvella needs access to your home folder (%1) to remove browser data. Allow? [y/N] </source>
        <translation>Corvella benötigt Zugriff auf Ihren Persönlichen Ordner (%1), um Browserdaten zu entfernen. Erlauben? [y/N] </translation>
    </message>
    <message>
        <source>--layout needs a value: macOS or Linux</source>
        <translation>--layout braucht einen Wert: macOS oder Linux</translation>
    </message>
    <message>
        <source>unknown layout &quot;%1&quot;; accepted: macOS, Linux</source>
        <translation>unbekannte Anordnung „%1“; möglich sind: macOS, Linux</translation>
    </message>
    <message>
        <source>--list takes no browser or category</source>
        <translation>--list nimmt keinen Browser und keine Kategorie</translation>
    </message>
    <message>
        <source>name a browser: %1</source>
        <translation>nennen Sie einen Browser: %1</translation>
    </message>
    <message>
        <source>unknown browser &quot;%1&quot;; accepted: %2</source>
        <translation>unbekannter Browser „%1“; möglich sind: %2</translation>
    </message>
    <message>
        <source>unknown category &quot;%1&quot;; accepted: %2</source>
        <translation>unbekannte Kategorie „%1“; möglich sind: %2</translation>
    </message>
    <message>
        <source>no access to the home folder %1. Grant it once with &quot;corvella-clean --allow-home-access %2&quot;, or run corvella-clean in a terminal and answer y.</source>
        <translation>kein Zugriff auf den Persönlichen Ordner %1. Erteilen Sie ihn einmalig mit „corvella-clean --allow-home-access %2“, oder starten Sie corvella-clean in einem Terminal und antworten Sie mit y.</translation>
    </message>
    <message>
        <source>Nothing would be removed from %1.</source>
        <translation>Aus %1 würde nichts entfernt.</translation>
    </message>
    <message numerus="yes">
        <source>warning: %n item(s) left as they were; the first: %1</source>
        <translation>
            <numerusform>Warnung: %n Eintrag blieb unverändert; der erste: %1</numerusform>
            <numerusform>Warnung: %n Einträge blieben unverändert; der erste: %1</numerusform>
        </translation>
    </message>
    <message>
        <source>warning: the access to %1 could not be saved in the settings (see the log); you will be asked again.</source>
        <translation>Warnung: Der Zugriff auf %1 konnte nicht in den Einstellungen gespeichert werden (siehe Protokoll); Sie werden erneut gefragt.</translation>
    </message>
    <message>
        <source>the output could not be written.</source>
        <translation>die Ausgabe konnte nicht geschrieben werden.</translation>
    </message>
    <message>
        <source>installed</source>
        <translation>installiert</translation>
    </message>
    <message>
        <source>not installed</source>
        <translation>nicht installiert</translation>
    </message>
    <message>
        <source>activated</source>
        <translation>aktiviert</translation>
    </message>
    <message>
        <source>not activated</source>
        <translation>nicht aktiviert</translation>
    </message>
    <message>
        <source>profiles: %1</source>
        <translation>Profile: %1</translation>
    </message>
    <message>
        <source>Profiles are not shown: Corvella has no access to %1 (grant it with &quot;corvella-clean --allow-home-access --list&quot;).</source>
        <translation>Profile werden nicht gezeigt: Corvella hat keinen Zugriff auf %1 (erteilen Sie ihn mit „corvella-clean --allow-home-access --list“).</translation>
    </message>
    <message>
        <source>waiting for another removal run to finish (at most %1 s)...</source>
        <translation>warte, bis ein anderer Entfernungslauf fertig ist (höchstens %1 s) …</translation>
    </message>
    <message>
        <source>%1 is running; quit it first. Nothing was changed.</source>
        <translation>%1 läuft; beenden Sie ihn zuerst. Nichts wurde geändert.</translation>
    </message>
    <message>
        <source>another removal run did not finish within %1 s. Nothing was changed; try again later.</source>
        <translation>ein anderer Entfernungslauf war nach %1 s nicht fertig. Nichts wurde geändert; versuchen Sie es später erneut.</translation>
    </message>
    <message>
        <source>%1 is running: a run would refuse to touch it until it quits.</source>
        <translation>%1 läuft: Ein Lauf würde ihn nicht anrühren, bis er beendet ist.</translation>
    </message>
    <message>
        <source>%1 started during the run, which stopped before changing its files again. Run it again once %1 has quit.</source>
        <translation>%1 wurde während des Laufs gestartet; der Lauf hat danach keine seiner Dateien mehr verändert. Führen Sie ihn erneut aus, sobald %1 beendet ist.</translation>
    </message>
    <message>
        <source>%1 %2 (%3)</source>
        <translation>%1 %2 (%3)</translation>
    </message>
    <message>
        <source>usage: corvella-clean [--preview] [--allow-home-access] [--keep SITE ...] BROWSER [CATEGORY ...]
       corvella-clean [--allow-home-access] --list
       corvella-clean --help | --version</source>
        <translation>Aufruf: corvella-clean [--preview] [--allow-home-access] [--keep WEBSITE ...] BROWSER [KATEGORIE ...]
        corvella-clean [--allow-home-access] --list
        corvella-clean --help | --version</translation>
    </message>
    <message>
        <source>
Removes the data you chose for a browser, as Corvella does when the browser quits.

  --list               show each browser, whether it is installed and activated, and its profiles
  --preview            show what would be removed or changed; change nothing
  --keep SITE          keep this site&apos;s cookies and site data too (a host name, with its subdomains; repeatable)
  --allow-home-access  grant access to the home folder without asking
  -h, --help           show this help
  --version            show the version

BROWSER: %1
CATEGORY: %2 (none: the categories chosen in Corvella)

See corvella-clean(1) for the exit status and examples.</source>
        <translation>
Entfernt die für einen Browser gewählten Daten, wie es Corvella tut, wenn der Browser beendet wird.

  --list               jeden Browser zeigen: ob er installiert und aktiviert ist, und seine Profile
  --preview            zeigen, was entfernt oder geändert würde; nichts ändern
  --keep WEBSITE       auch Cookies und Website-Daten dieser Website behalten (ein Hostname, mit seinen Subdomains; wiederholbar)
  --allow-home-access  Zugriff auf den Persönlichen Ordner ohne Nachfrage erteilen
  -h, --help           diese Hilfe zeigen
  --version            die Version zeigen

BROWSER: %1
KATEGORIE: %2 (keine: die in Corvella gewählten Kategorien)

Rückgabewerte und Beispiele stehen in corvella-clean(1).</translation>
    </message>
    <message>
        <source>--keep needs a site: a host name such as example.com</source>
        <translation>--keep braucht eine Website: einen Hostnamen wie example.com</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no site to keep; give a host name such as example.com, an IP address or localhost</source>
        <translation>„%1“ ist keine Website, die behalten werden kann; geben Sie einen Hostnamen wie example.com, eine IP-Adresse oder localhost an</translation>
    </message>
    <message>
        <source>unknown option &quot;%1&quot;; accepted: --list, --preview, --keep, --allow-home-access, --help, --version</source>
        <translation>unbekannte Option „%1“; möglich sind: --list, --preview, --keep, --allow-home-access, --help, --version</translation>
    </message>
    <message>
        <source>Kept sites: none</source>
        <translation>Behaltene Websites: keine</translation>
    </message>
    <message>
        <source>Kept sites: %1</source>
        <translation>Behaltene Websites: %1</translation>
    </message>
</context>
<context>
    <name>DesktopFace</name>
    <message>
        <source>Corvella</source>
        <translation>Corvella</translation>
    </message>
    <message>
        <source>Please choose a synced folder</source>
        <translation>Bitte wählen Sie einen synchronisierten Ordner</translation>
    </message>
    <message>
        <source>To share your settings across all your computers, choose a folder that you already sync between them (with Syncthing, Nextcloud or a network share) in Corvella&apos;s General preferences.</source>
        <translation>Um Ihre Einstellungen mit all Ihren Computern zu teilen, wählen Sie in den allgemeinen Einstellungen von Corvella einen Ordner, den Sie bereits zwischen ihnen synchronisieren (mit Syncthing, Nextcloud oder einer Netzwerkfreigabe).</translation>
    </message>
    <message>
        <source>Do not show this message again</source>
        <translation>Diese Meldung nicht mehr anzeigen</translation>
    </message>
    <message>
        <source>Choose Folder…</source>
        <translation>Ordner wählen …</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
</context>
<context>
    <name>DisplayPreferencesViewController</name>
    <message>
        <source>Show Corvella in the tray</source>
        <translation>Corvella in der Kontrollleiste zeigen</translation>
    </message>
    <message>
        <source>Keep the window out of the task bar</source>
        <translation>Fenster nicht in der Taskleiste zeigen</translation>
    </message>
    <message>
        <source>Corvella goes on protecting your browsers while its window is closed.</source>
        <translation>Corvella schützt Ihre Browser weiter, während sein Fenster geschlossen ist.</translation>
    </message>
    <message>
        <source>DisplayPreferences_en</source>
        <extracomment>Names the pane in the stored settings: keep it as it is.</extracomment>
        <translation>DisplayPreferences_en</translation>
    </message>
    <message>
        <source>Display</source>
        <translation>Darstellung</translation>
    </message>
</context>
<context>
    <name>GeneralPopover</name>
    <message>
        <source>Preferences…</source>
        <translation>Einstellungen …</translation>
    </message>
    <message>
        <source>Quit Corvella</source>
        <translation>Corvella beenden</translation>
    </message>
    <message>
        <source>About Corvella</source>
        <translation>Über Corvella</translation>
    </message>
    <message>
        <source>When a browser you protect quits, Corvella removes the data you chose for it and keeps your bookmarks, passwords and extensions. Point at a browser below to choose what goes.</source>
        <translation>Wenn ein geschützter Browser beendet wird, entfernt Corvella die dafür gewählten Daten und behält Lesezeichen, Passwörter und Erweiterungen. Zeigen Sie unten auf einen Browser, um zu wählen, was entfernt wird.</translation>
    </message>
</context>
<context>
    <name>GeneralPreferencesViewController</name>
    <message>
        <source>Choose…</source>
        <translation>Wählen …</translation>
    </message>
    <message>
        <source>Start Corvella when you log in</source>
        <translation>Corvella bei der Anmeldung starten</translation>
    </message>
    <message>
        <source>Keep the window closed when started at login</source>
        <translation>Fenster beim Start nach der Anmeldung geschlossen lassen</translation>
    </message>
    <message>
        <source>Show a notification after removing data</source>
        <translation>Nach dem Entfernen eine Benachrichtigung zeigen</translation>
    </message>
    <message>
        <source>Also remove data where today&apos;s browsers keep it</source>
        <translation>Auch Daten dort entfernen, wo heutige Browser sie ablegen</translation>
    </message>
    <message>
        <source>Newer Chromium and Firefox versions keep sessions, site storage and caches in places older browsers did not. Bookmarks, passwords and extensions stay.</source>
        <translation>Neuere Versionen von Chromium und Firefox legen Sitzungen, Website-Speicher und Caches an Orten ab, die ältere Browser nicht nutzten. Lesezeichen, Passwörter und Erweiterungen bleiben erhalten.</translation>
    </message>
    <message>
        <source>Overwrite files before removing them</source>
        <translation>Dateien vor dem Entfernen überschreiben</translation>
    </message>
    <message>
        <source>Slower. On SSDs and on copy-on-write file systems (Btrfs, ZFS) the old data stays in blocks no program can reach, so overwriting cannot erase it there; full-disk encryption protects it.</source>
        <translation>Langsamer. Auf SSDs und Copy-on-Write-Dateisystemen (Btrfs, ZFS) bleiben die alten Daten in Blöcken, die kein Programm erreicht; Überschreiben kann sie dort nicht löschen, eine Vollverschlüsselung des Datenträgers schützt sie.</translation>
    </message>
    <message>
        <source>Share these settings with your other computers</source>
        <translation>Diese Einstellungen mit Ihren anderen Computern teilen</translation>
    </message>
    <message>
        <source>e.g. ~/Sync or ~/Nextcloud</source>
        <translation>z. B. ~/Sync oder ~/Nextcloud</translation>
    </message>
    <message>
        <source>Synced folder</source>
        <translation>Synchronisierter Ordner</translation>
    </message>
    <message>
        <source>Choose the synced folder</source>
        <translation>Den synchronisierten Ordner wählen</translation>
    </message>
    <message>
        <source>Synced folder problem</source>
        <translation>Problem mit dem synchronisierten Ordner</translation>
    </message>
    <message>
        <source>Corvella keeps the shared settings in one file in this folder; your sync tool carries it to your other computers.</source>
        <translation>Corvella legt die geteilten Einstellungen in einer Datei in diesem Ordner ab; Ihr Synchronisierungsprogramm bringt sie zu Ihren anderen Computern.</translation>
    </message>
    <message>
        <source>GeneralPreferences_en</source>
        <extracomment>Names the pane in the stored settings: keep it as it is.</extracomment>
        <translation>GeneralPreferences_en</translation>
    </message>
    <message>
        <source>General</source>
        <translation>Allgemein</translation>
    </message>
    <message>
        <source>Choose a folder inside your home folder.</source>
        <translation>Wählen Sie einen Ordner innerhalb Ihres Persönlichen Ordners.</translation>
    </message>
    <message>
        <source>There is no folder “%1”.</source>
        <translation>Es gibt keinen Ordner „%1“.</translation>
    </message>
    <message>
        <source>The folder could not be saved in the settings.</source>
        <translation>Der Ordner konnte nicht in den Einstellungen gespeichert werden.</translation>
    </message>
    <message>
        <source>Choose a Synced Folder</source>
        <translation>Synchronisierten Ordner wählen</translation>
    </message>
</context>
<context>
    <name>KeptSitesPreferencesViewController</name>
    <message>
        <source>Kept sites</source>
        <translation>Behaltene Websites</translation>
    </message>
    <message>
        <source>Add</source>
        <translation>Hinzufügen</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>Sites with cookies now</source>
        <translation>Websites, die jetzt Cookies haben</translation>
    </message>
    <message>
        <source>Keep</source>
        <translation>Behalten</translation>
    </message>
    <message>
        <source>Also keep each browser&apos;s own exceptions</source>
        <translation>Auch die eigenen Ausnahmen jedes Browsers behalten</translation>
    </message>
    <message>
        <source>Corvella keeps the cookies and site data of these sites, so you stay signed in to them; every other site is forgotten. “example.com” also keeps its subdomains.</source>
        <translation>Corvella behält die Cookies und Website-Daten dieser Websites, damit Sie dort angemeldet bleiben; alle anderen Websites werden vergessen. „example.com“ behält auch seine Subdomains.</translation>
    </message>
    <message>
        <source>&amp;Kept sites:</source>
        <translation>&amp;Behaltene Websites:</translation>
    </message>
    <message>
        <source>e.g. mail.example.com</source>
        <translation>z. B. mail.example.com</translation>
    </message>
    <message>
        <source>Site to keep</source>
        <translation>Zu behaltende Website</translation>
    </message>
    <message>
        <source>Add the site</source>
        <translation>Die Website hinzufügen</translation>
    </message>
    <message>
        <source>Remove the selected sites</source>
        <translation>Die ausgewählten Websites entfernen</translation>
    </message>
    <message>
        <source>Site problem</source>
        <translation>Problem mit der Website</translation>
    </message>
    <message>
        <source>&amp;Sites with cookies now:</source>
        <translation>&amp;Websites, die jetzt Cookies haben:</translation>
    </message>
    <message>
        <source>Keep the selected sites</source>
        <translation>Die ausgewählten Websites behalten</translation>
    </message>
    <message>
        <source>The sites you told a browser to always allow cookies for.</source>
        <translation>Die Websites, für die Sie einem Browser gesagt haben, Cookies immer zu erlauben.</translation>
    </message>
    <message>
        <source>KeptSitesPreferences_en</source>
        <extracomment>Names the pane in the stored settings: keep it as it is.</extracomment>
        <translation>KeptSitesPreferences_en</translation>
    </message>
    <message>
        <source>Kept Sites</source>
        <translation>Websites</translation>
    </message>
    <message>
        <source>The kept sites could not be saved in the settings.</source>
        <translation>Die behaltenen Websites konnten nicht in den Einstellungen gespeichert werden.</translation>
    </message>
    <message>
        <source>“%1” is no site name. Type a name such as example.com, an IP address or localhost, without “https://” or a path.</source>
        <translation>„%1“ ist kein Website-Name. Geben Sie einen Namen wie example.com, eine IP-Adresse oder localhost ein, ohne „https://“ und ohne Pfad.</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Corvella</source>
        <translation>Corvella</translation>
    </message>
    <message>
        <source>v%1</source>
        <translation>v%1</translation>
    </message>
    <message>
        <source>Version %1</source>
        <translation>Version %1</translation>
    </message>
    <message>
        <source>About Corvella</source>
        <translation>Über Corvella</translation>
    </message>
    <message>
        <source>Protection</source>
        <translation>Schutz</translation>
    </message>
    <message>
        <source>Corvella is Enabled</source>
        <translation>Corvella ist eingeschaltet</translation>
    </message>
    <message>
        <source>Corvella is Disabled</source>
        <translation>Corvella ist ausgeschaltet</translation>
    </message>
    <message>
        <source>Grant Access…</source>
        <translation>Zugriff gewähren…</translation>
    </message>
    <message>
        <source>Grant access to the home folder</source>
        <translation>Zugriff auf den persönlichen Ordner gewähren</translation>
    </message>
    <message>
        <source>No access to your home folder</source>
        <translation>Kein Zugriff auf Ihren persönlichen Ordner</translation>
    </message>
</context>
<context>
    <name>PreferencesWindowController</name>
    <message>
        <source>Corvella Preferences</source>
        <translation>Corvella-Einstellungen</translation>
    </message>
    <message>
        <source>Preference Panes</source>
        <translation>Einstellungsbereiche</translation>
    </message>
    <message>
        <source>PrefWindowPaddingSize</source>
        <extracomment>The preference window&apos;s extra width in pixels beyond 470, for languages with longer texts. A number.</extracomment>
        <translation>PrefWindowPaddingSize</translation>
    </message>
</context>
<context>
    <name>RemovalPreview</name>
    <message>
        <source>run script</source>
        <translation>Skript ausführen</translation>
    </message>
    <message>
        <source>remove</source>
        <translation>entfernen</translation>
    </message>
    <message>
        <source>remove files below</source>
        <translation>Dateien entfernen unter</translation>
    </message>
    <message>
        <source>write</source>
        <translation>schreiben</translation>
    </message>
    <message>
        <source>create folder</source>
        <translation>Ordner anlegen</translation>
    </message>
    <message>
        <source>change</source>
        <translation>ändern</translation>
    </message>
    <message>
        <source>keep</source>
        <translation>behalten</translation>
    </message>
</context>
<context>
    <name>RemovalRun</name>
    <message>
        <source>Cookies</source>
        <translation>Cookies</translation>
    </message>
    <message>
        <source>LocalStorage and Databases</source>
        <translation>Lokaler Speicher und Datenbanken</translation>
    </message>
    <message>
        <source>Flash</source>
        <translation>Flash</translation>
    </message>
    <message>
        <source>Silverlight</source>
        <translation>Silverlight</translation>
    </message>
    <message>
        <source>Cache</source>
        <translation>Cache</translation>
    </message>
    <message>
        <source>History</source>
        <translation>Verlauf</translation>
    </message>
    <message>
        <source>Favicons</source>
        <translation>Favicons</translation>
    </message>
    <message>
        <source>Webpage previews</source>
        <translation>Webseiten-Vorschauen</translation>
    </message>
    <message>
        <source>Form values</source>
        <translation>Formulardaten</translation>
    </message>
    <message>
        <source>Downloads</source>
        <translation>Downloads</translation>
    </message>
    <message>
        <source>Website preferences</source>
        <translation>Website-Einstellungen</translation>
    </message>
    <message>
        <source>Other search engines</source>
        <translation>Weitere Suchmaschinen</translation>
    </message>
    <message>
        <source>Whoops, you havn&apos;t selected anything to be removed from %@</source>
        <translation>Hoppla, für %@ ist nichts zum Entfernen ausgewählt</translation>
    </message>
    <message>
        <source>%@ removed from %@</source>
        <translation>%@ aus %@ entfernt</translation>
    </message>
</context>
<context>
    <name>StatusItem</name>
    <message>
        <source>Corvella</source>
        <translation>Corvella</translation>
    </message>
    <message>
        <source>Open Corvella</source>
        <translation>Corvella öffnen</translation>
    </message>
    <message>
        <source>Preferences…</source>
        <translation>Einstellungen …</translation>
    </message>
    <message>
        <source>Quit Corvella</source>
        <translation>Corvella beenden</translation>
    </message>
    <message>
        <source>Please activate a Browser</source>
        <translation>Bitte aktivieren Sie einen Browser</translation>
    </message>
    <message>
        <source>Disable Corvella</source>
        <translation>Corvella ausschalten</translation>
    </message>
    <message>
        <source>Enable Corvella</source>
        <translation>Corvella einschalten</translation>
    </message>
    <message>
        <source>Corvella is Enabled</source>
        <translation>Corvella ist eingeschaltet</translation>
    </message>
    <message>
        <source>Corvella is Disabled</source>
        <translation>Corvella ist ausgeschaltet</translation>
    </message>
    <message>
        <source>Grant Access to the Home Folder…</source>
        <translation>Zugriff auf den persönlichen Ordner gewähren…</translation>
    </message>
    <message>
        <source>Corvella has no access to your home folder</source>
        <translation>Corvella hat keinen Zugriff auf Ihren persönlichen Ordner</translation>
    </message>
</context>
<context>
    <name>UpdatePreferencesViewController</name>
    <message>
        <source>Check for updates automatically</source>
        <translation>Automatisch nach Aktualisierungen suchen</translation>
    </message>
    <message>
        <source>Install updates automatically</source>
        <translation>Aktualisierungen automatisch installieren</translation>
    </message>
    <message>
        <source>On this system Corvella is updated with your other software, by your package manager. These choices are kept with your settings and shared with your other computers.</source>
        <translation>Auf diesem System wird Corvella zusammen mit Ihrer übrigen Software von Ihrer Paketverwaltung aktualisiert. Diese Auswahl wird mit Ihren Einstellungen gespeichert und mit Ihren anderen Computern geteilt.</translation>
    </message>
    <message>
        <source>How often to check</source>
        <translation>Wie oft suchen</translation>
    </message>
    <message>
        <source>Daily</source>
        <translation>Täglich</translation>
    </message>
    <message>
        <source>Weekly</source>
        <translation>Wöchentlich</translation>
    </message>
    <message>
        <source>Monthly</source>
        <translation>Monatlich</translation>
    </message>
    <message>
        <source>UpdatePreferences_en</source>
        <extracomment>Names the pane in the stored settings: keep it as it is.</extracomment>
        <translation>UpdatePreferences_en</translation>
    </message>
    <message>
        <source>Updates</source>
        <translation>Aktualisierungen</translation>
    </message>
</context>
<context>
    <name>WarningController</name>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Quit Corvella</source>
        <translation>Corvella beenden</translation>
    </message>
    <message>
        <source>Corvella cannot read Safari&apos;s files</source>
        <translation>Corvella kann die Dateien von Safari nicht lesen</translation>
    </message>
    <message>
        <source>Safari keeps its history, cookies and caches where only programs you allow may read them. Until Corvella is allowed to read them, it cannot protect Safari, so Safari stays deactivated.

Allow Corvella full access to your files in your system&apos;s privacy settings, then activate Safari again.</source>
        <translation>Safari legt Verlauf, Cookies und Caches dort ab, wo nur Programme sie lesen dürfen, denen Sie es erlauben. Solange Corvella sie nicht lesen darf, kann es Safari nicht schützen; Safari bleibt daher deaktiviert.

Erlauben Sie Corvella in den Datenschutzeinstellungen Ihres Systems den vollen Zugriff auf Ihre Dateien, und aktivieren Sie Safari dann erneut.</translation>
    </message>
</context>
</TS>
