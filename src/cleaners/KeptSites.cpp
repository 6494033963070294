#include "cleaners/KeptSites.h"

#include "platform/SettingsKeys.h"
#include "platform/UserDefaults.h"
#include "sandbox/Sandbox.h"

#include <QHostAddress>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>
#include <QUrl>

namespace {

bool isAddressOrLocalhost(QStringView site)
{
    static const QRegularExpression ipv4(QStringLiteral("^[0-9]+\\.[0-9]+\\.[0-9]+\\.[0-9]+$"));
    return site == u"localhost" || site.contains(u':') || ipv4.match(site).hasMatch();
}

bool isHostName(QStringView ace)
{
    if (ace.isEmpty() || ace.size() > 253)
        return false;
    for (const QStringView label : ace.split(u'.')) {
        if (label.isEmpty() || label.size() > 63 || label.startsWith(u'-') || label.endsWith(u'-'))
            return false;
        for (const QChar c : label) {
            if (!((c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9') || c == u'-'))
                return false;
        }
    }
    return true;
}

// A host as written in a store, made comparable: lower case, no leading "." or brackets.
QString plainHost(QStringView host)
{
    QString plain = host.trimmed().toString().toLower();
    if (plain.startsWith(u'.'))
        plain.remove(0, 1);
    if (plain.endsWith(u'.'))
        plain.chop(1);
    if (plain.startsWith(u'[') && plain.endsWith(u']'))
        plain = plain.mid(1, plain.size() - 2);
    return plain;
}

// The host of "scheme://host[:port][/…]".
QStringView hostOfUrl(QStringView url)
{
    const qsizetype start = url.indexOf(u"://");
    if (start < 0)
        return {};
    QStringView rest = url.mid(start + 3);
    if (rest.startsWith(u'[')) // an IPv6 address, with its brackets
        return rest.left(rest.indexOf(u']') + 1);
    qsizetype end = rest.size();
    for (const char16_t stop : {u'/', u':', u'?', u'#'}) {
        const qsizetype at = rest.indexOf(stop);
        if (at >= 0)
            end = std::min(end, at);
    }
    return rest.left(end);
}

} // namespace

KeptSites::KeptSites(const QStringList& sites)
{
    for (const QString& site : sites) {
        if (normalised(site) != site || m_sites.contains(site))
            continue;
        m_sites.append(site);
        (isAddressOrLocalhost(site) ? m_exact : m_domains).insert(site);
    }
}

namespace {

QStringList userSites(const CleanerServices& services)
{
    QStringList sites;
    for (const QVariant& site : services.defaults.arrayForKey(SettingsKeys::keptSites))
        sites.append(site.toString());
    return sites + services.keptForThisRun;
}

// The host of a Chromium-family content-setting pattern's first half: "[*.]example.com,*",
// "https://mail.example.com:443,*". A pattern for every site ("*") names none.
QString patternHost(const QString& pattern)
{
    QString host = pattern.section(u',', 0, 0);
    if (host.contains(u"://"))
        host = host.section(QStringLiteral("://"), 1);
    if (host.startsWith(u"[*.]"))
        host.remove(0, 4);
    if (host.startsWith(u'['))
        return host.section(u']', 0, 0).mid(1); // an IPv6 address
    return host.section(u'/', 0, 0).section(u':', 0, 0);
}

} // namespace

KeptSites KeptSites::forChromiumProfile(const CleanerServices& services, const QString& profile)
{
    QStringList sites = userSites(services);
    if (services.defaults.boolForKey(SettingsKeys::keepBrowserExceptions)) {
        const QByteArray preferences =
            services.sandbox.dataWithContentsOfFile(profile + QStringLiteral("/Preferences"))
                .value_or(QByteArray());
        const QJsonObject cookies =
            QJsonDocument::fromJson(preferences)[QLatin1String("profile")][QLatin1String("content_settings")]
                                                [QLatin1String("exceptions")][QLatin1String("cookies")]
                                                    .toObject();
        constexpr int allow = 1;
        for (auto it = cookies.constBegin(); it != cookies.constEnd(); ++it) {
            if (it.value()[QStringLiteral("setting")].toInt() == allow)
                sites.append(patternHost(it.key()));
        }
    }
    return KeptSites(normalisedList(sites));
}

KeptSites KeptSites::forFirefoxProfile(const CleanerServices& services, const QString& profile)
{
    QStringList sites = userSites(services);
    if (services.defaults.boolForKey(SettingsKeys::keepBrowserExceptions)) {
        constexpr int allow = 1;
        for (const QVariantMap& row :
             services.sandbox
                 .returnArrayFromSql(QStringLiteral("SELECT origin FROM moz_perms WHERE type = 'cookie' AND "
                                                    "permission = %1")
                                         .arg(allow),
                                     profile + QStringLiteral("/permissions.sqlite"))
                 .value_or(QList<QVariantMap>())) {
            const QString origin = row.value(QStringLiteral("origin")).toString().section(u'^', 0, 0);
            sites.append(hostOfUrl(origin).toString());
        }
    }
    return KeptSites(normalisedList(sites));
}

std::optional<QString> KeptSites::normalised(const QString& entry)
{
    QString site = entry.trimmed();
    if (site.startsWith(u'[') && site.endsWith(u']'))
        site = site.mid(1, site.size() - 2);
    if (site.contains(u':')) {
        const QHostAddress address(site);
        if (address.protocol() != QAbstractSocket::IPv6Protocol)
            return std::nullopt;
        return address.toString().toLower();
    }
    if (site.endsWith(u'.'))
        site.chop(1);
    const QString ace = QString::fromLatin1(QUrl::toAce(site)).toLower();
    if (!isHostName(ace))
        return std::nullopt;
    return ace;
}

QStringList KeptSites::normalisedList(const QStringList& entries, QStringList* refused)
{
    QStringList sites;
    for (const QString& entry : entries) {
        const std::optional<QString> site = normalised(entry);
        if (!site) {
            if (refused)
                refused->append(entry);
        } else if (!sites.contains(*site)) {
            sites.append(*site);
        }
    }
    return sites;
}

bool KeptSites::keepsHost(QStringView host) const
{
    if (m_sites.isEmpty())
        return false;
    const QString plain = plainHost(host);
    if (m_exact.contains(plain) || m_domains.contains(plain)) {
        m_matched.insert(plain);
        return true;
    }
    // A subdomain: each shorter name after a ".".
    for (qsizetype dot = plain.indexOf(u'.'); dot >= 0; dot = plain.indexOf(u'.', dot + 1)) {
        if (m_domains.contains(plain.mid(dot + 1))) {
            m_matched.insert(plain.mid(dot + 1));
            return true;
        }
    }
    return false;
}

QStringList KeptSites::takeMatched() const
{
    QStringList matched(m_matched.cbegin(), m_matched.cend());
    matched.sort();
    m_matched.clear();
    return matched;
}

bool KeptSites::keepsOrigin(QStringView origin) const
{
    // A storage key: the origin, then "^0<top-level site>", "^1"/"^2" (an opaque nonce: no site to
    // keep it by), "^3" (whether an ancestor is cross-site).
    const QList<QStringView> parts = origin.split(u'^');
    if (!keepsHost(hostOfUrl(parts.first())))
        return false;
    for (const QStringView part : parts.mid(1)) {
        if (part.startsWith(u'0') ? !keepsHost(hostOfUrl(part.mid(1))) : !part.startsWith(u'3'))
            return false;
    }
    return true;
}

bool KeptSites::keepsChromiumPattern(QStringView pattern) const
{
    const QString text = pattern.toString();
    const QString second = text.section(u',', 1).trimmed();
    return keepsHost(patternHost(text)) &&
           (second.isEmpty() || second == u"*" || keepsHost(patternHost(second)));
}

bool KeptSites::keepsChromiumOriginName(QStringView name) const
{
    // "scheme_host_port", then an ending that starts with a "." ("https_a.org_0.indexeddb.leveldb").
    const qsizetype scheme = name.indexOf(u'_');
    const qsizetype port = name.lastIndexOf(u'_');
    if (scheme <= 0 || port <= scheme)
        return false;
    return keepsHost(name.mid(scheme + 1, port - scheme - 1));
}

bool KeptSites::keepsFirefoxOriginFolder(QStringView name) const
{
    const qsizetype caret = name.indexOf(u'^');
    const QStringView origin = caret < 0 ? name : name.left(caret);
    const qsizetype scheme = origin.indexOf(u"+++");
    if (scheme <= 0)
        return false;
    QStringView host = origin.mid(scheme + 3);
    const qsizetype plus = host.lastIndexOf(u'+');
    if (plus >= 0 && !host.startsWith(u'['))
        host = host.left(plus); // "+8443", the port
    return keepsHost(host) && keepsFirefoxAttributes(caret < 0 ? QStringView() : name.mid(caret));
}

bool KeptSites::keepsFirefoxOrigin(QStringView origin) const
{
    const qsizetype caret = origin.indexOf(u'^');
    return keepsHost(hostOfUrl(caret < 0 ? origin : origin.left(caret))) &&
           keepsFirefoxAttributes(caret < 0 ? QStringView() : origin.mid(caret));
}

bool KeptSites::keepsFirefoxAttributes(QStringView attributes) const
{
    // "userContextId=1" (a container: a kept site is kept in every one), "partitionKey=(https,b.org)"
    // and "firstPartyDomain=b.org" (stored under another site, which must be kept too).
    const QString decoded = QUrl::fromPercentEncoding(attributes.toUtf8()).replace(u'^', u'&');
    for (const QStringView attribute : QStringView(decoded).split(u'&')) {
        if (attribute.startsWith(u"partitionKey=")) {
            const QStringList fields = attribute.mid(13).toString().remove(u'(').remove(u')').split(u',');
            if (fields.size() < 2 || !keepsHost(fields.at(1)))
                return false;
        } else if (attribute.startsWith(u"firstPartyDomain=") && !keepsHost(attribute.mid(17))) {
            return false;
        }
    }
    return true;
}

bool KeptSites::keepsFirefoxScope(QStringView scope) const
{
    for (const QStringView part : scope.split(u':')) {
        if (part.endsWith(u'.')) {
            QString host;
            for (auto it = part.crbegin(); it != part.crend(); ++it)
                host.append(*it);
            return keepsHost(host);
        }
    }
    return false;
}
