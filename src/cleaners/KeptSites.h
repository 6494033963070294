#pragma once

#include "cleaners/CleanerServices.h"

#include <QSet>
#include <QString>
#include <QStringList>

#include <optional>

// The sites the user keeps ("keptSites"): their cookies and site data stay while every other site's
// go. "example.com" keeps example.com and every subdomain; an IP address or "localhost" keeps that
// host on any port. Matching is on host names read from the browsers' own stores, in C++: no host
// reaches SQL or a path.
class KeptSites
{
public:
    KeptSites() = default;
    // Entries already normalised; others are dropped.
    explicit KeptSites(const QStringList& sites);
    // The user's kept sites, those kept for this run only and, while "keepBrowserExceptions" is on,
    // the sites the profile's own settings always allow cookies for: a Chromium-family profile's
    // cookie exceptions set to "allow" in "Preferences",
    // Firefox's "cookie" permissions set to allow in "permissions.sqlite". Read anew each time.
    static KeptSites forChromiumProfile(const CleanerServices& services, const QString& profile);
    static KeptSites forFirefoxProfile(const CleanerServices& services, const QString& profile);

    // The entry as it is stored: trimmed, lower case, an internationalised name in its ASCII form, an
    // IPv6 address without brackets. No value when it is no host name (a URL, a path, spaces, ...).
    static std::optional<QString> normalised(const QString& entry);
    // The entries normalised, duplicates dropped, in their order; `refused` gets those that are not
    // host names.
    static QStringList normalisedList(const QStringList& entries, QStringList* refused = nullptr);

    bool isEmpty() const { return m_sites.isEmpty(); }
    // The kept sites that matched since the last call, sorted (what a preview says a store keeps).
    QStringList takeMatched() const;
    const QStringList& sites() const { return m_sites; }

    // A host as a store writes it: any case, a leading "." (a domain cookie), brackets round IPv6.
    bool keepsHost(QStringView host) const;
    // "https://a.org", "https://a.org:8443/", with a partition ("…^0https://b.org", "…^1…"): kept
    // when its host is kept and so is the site it is stored under.
    bool keepsOrigin(QStringView origin) const;
    // Chromium's origin file names: "https_a.org_0", with ".indexeddb.leveldb", ".localstorage" and
    // the like after them.
    bool keepsChromiumOriginName(QStringView name) const;
    // Firefox's origin folders: "https+++a.org+8443^userContextId=1&partitionKey=%28https%2Cb.org%29".
    bool keepsFirefoxOriginFolder(QStringView name) const;
    // A Chromium-family site pattern ("[*.]example.com,*", "https://a.org:443,https://b.org:443") or a
    // host ("example.com", a zoom level's): kept when both its sites are (or the second is "*").
    bool keepsChromiumPattern(QStringView pattern) const;
    // Firefox's origins with their attributes ("https://a.org^userContextId=1"), and the attributes
    // alone (a cookie's "originAttributes"): a partition or first party must be kept too.
    bool keepsFirefoxOrigin(QStringView origin) const;
    bool keepsFirefoxAttributes(QStringView attributes) const;
    // Firefox's local storage scopes: the host reversed, then scheme and port ("gro.a.:https:443").
    bool keepsFirefoxScope(QStringView scope) const;

private:
    QStringList m_sites;
    QSet<QString> m_exact;   // IP addresses and "localhost": that host only
    QSet<QString> m_domains; // with their subdomains
    mutable QSet<QString> m_matched;
};
