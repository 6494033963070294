#!/usr/bin/env python3
"""Builds a heavy browser profile, the size of years of browsing, in the browsers' own table shapes.

The databases start from the shapes captured from real profiles (bench/profiles/*.sql, made by
bench/profiles/capture.sh) and are filled with made-up but realistic rows; caches and site storage
are files of the browsers' naming. Everything scales with SCALE (1.0 is the full size).

Usage: heavy_profile.py chromium|firefox ROOT SCALE   (ROOT stands for the home folder)
"""
import json
import os
import random
import sqlite3
import sys

SHAPES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "profiles")

# Full-size figures; the generator multiplies each by the scale (never below a handful).
CHROMIUM = dict(urls=300_000, visits=1_000_000, cache_files=50_000, indexeddb_mb=200, favicons=20_000,
                cookies=30_000, form_entries=20_000, downloads=500, sites=2_000)
FIREFOX = dict(places=280_000, visits=500_000, bookmarks=5_000, cache_files=50_000, favicons=20_000,
               cookies=30_000, downloads=500, storage_mb=50, sites=2_000)
EPOCH_1601 = 11_644_473_600_000_000  # Chromium's clock: microseconds since 1601


def scaled(figures, scale):
    return {key: max(5, int(value * scale)) for key, value in figures.items()}


def database(path, shape):
    """A new database at PATH in the captured shape (page size, schema, seed rows)."""
    os.makedirs(os.path.dirname(path), exist_ok=True)
    if os.path.exists(path):
        os.remove(path)
    db = sqlite3.connect(path, isolation_level=None)
    with open(os.path.join(SHAPES, shape)) as f:
        # Tables SQLite keeps for itself are made by SQLite, never by a statement.
        script = "\n".join(l for l in f if not l.startswith("CREATE TABLE sqlite_"))
    db.executescript(script)
    db.execute("PRAGMA synchronous=OFF")
    db.execute("BEGIN")
    return db


def fill(db, table, rows):
    """Inserts ROWS (dicts) into TABLE; required columns a row does not name get an empty value."""
    info = db.execute(f'PRAGMA table_info("{table}")').fetchall()
    names = [c[1] for c in info]
    empty = {c[1]: (0 if any(t in c[2].upper() for t in ("INT", "BOOL", "NUM")) else
                    b"" if "BLOB" in c[2].upper() else "")
             for c in info if c[3] and c[4] is None and not c[5]}
    rows = iter(rows)
    first = next(rows, None)
    if first is None:
        return
    columns = [n for n in names if n in first or n in empty]
    sql = f'INSERT INTO "{table}" ({",".join(columns)}) VALUES ({",".join("?" * len(columns))})'

    def values(row):
        return tuple(row.get(c, empty.get(c)) for c in columns)

    db.execute(sql, values(first))
    db.executemany(sql, (values(r) for r in rows))


def close(db):
    db.execute("COMMIT")
    db.close()


def words(rng, count):
    return " ".join(rng.choice(VOCABULARY) for _ in range(count))


VOCABULARY = ("news weather recipe travel review guide city music video photo garden football market "
              "science history museum library school bicycle coffee mountain river forum help login "
              "account settings cart order invoice calendar mail chat map train flight hotel").split()


def site(i):
    return f"site{i}.example"


def url(rng, i, sites):
    host = site(i % sites)
    return f"https://{host}/{words(rng, 3).replace(' ', '/')}/{i}?ref={rng.getrandbits(40):x}"


def files(folder, count, names, sizes, rng):
    """COUNT files in FOLDER named by NAMES(rng), sizes from SIZES(rng) bytes."""
    os.makedirs(folder, exist_ok=True)
    block = os.urandom(1 << 20)
    for _ in range(count):
        size = sizes(rng)
        with open(os.path.join(folder, names(rng)), "wb") as out:
            while size > 0:
                out.write(block[:min(size, len(block))])
                size -= len(block)


def spread(folder, total_mb, origins, name, rng):
    """TOTAL_MB of storage files over ORIGINS site folders made by NAME(i)."""
    per_origin = max(1, int(total_mb * (1 << 20) / origins))
    for i in range(origins):
        files(os.path.join(folder, name(i)), 1, lambda r: "000003.log", lambda r: 1024, rng)
        chunks = max(1, per_origin // (2 << 20))
        numbers = iter(range(5, 5 + chunks))
        files(os.path.join(folder, name(i)), chunks, lambda r: f"{next(numbers):06d}.ldb",
              lambda r: per_origin // chunks, rng)


def chromium(root, scale, rng):
    n = scaled(CHROMIUM, scale)
    data = os.path.join(root, ".config/chromium")
    profile = os.path.join(data, "Default")
    os.makedirs(profile, exist_ok=True)
    with open(os.path.join(data, "Local State"), "w") as f:
        json.dump({"profile": {"info_cache": {"Default": {"name": "Person 1"}}}}, f)
    now = EPOCH_1601 + 1_790_000_000_000_000

    db = database(os.path.join(profile, "History"), "chromium-history.sql")
    fill(db, "urls", ({"id": i, "url": url(rng, i, n["sites"]), "title": words(rng, 6).title(),
                       "visit_count": 3, "typed_count": i % 7 == 0, "last_visit_time": now - i * 1000}
                      for i in range(1, n["urls"] + 1)))
    fill(db, "visits", ({"id": v, "url": rng.randint(1, n["urls"]), "visit_time": now - v * 300,
                         "from_visit": v - 1 if v % 3 else 0, "transition": 805306368, "segment_id": v % 50,
                         "visit_duration": rng.randint(0, 600_000_000)} for v in range(1, n["visits"] + 1)))
    fill(db, "context_annotations", ({"visit_id": v, "context_annotation_flags": 0, "window_id": 1,
                                      "tab_id": v % 40, "response_code": 200} for v in range(1, n["visits"] + 1)))
    fill(db, "content_annotations", ({"visit_id": v, "annotation_flags": 0, "has_url_keyed_image": 0,
                                      "page_language": "en", "categories": "[]"}
                                     for v in range(1, n["visits"] + 1, 5)))
    fill(db, "visit_source", ({"id": v, "source": 1} for v in range(1, n["visits"] + 1, 20)))
    fill(db, "keyword_search_terms", ({"keyword_id": 2, "url_id": i, "term": words(rng, 2),
                                       "normalized_term": words(rng, 2)} for i in range(1, n["urls"] + 1, 50)))
    fill(db, "segments", ({"id": s, "name": f"https://{site(s)}/", "url_id": s} for s in range(1, n["sites"])))
    fill(db, "segment_usage", ({"id": s, "segment_id": s % n["sites"] + 1, "time_slot": now - s * 86_400_000_000,
                                "visit_count": 4} for s in range(1, 3 * n["sites"])))
    fill(db, "visited_links", ({"id": i, "link_url_id": i, "top_level_url": f"https://{site(i % 97)}/",
                                "frame_url": f"https://{site(i % 97)}/", "visit_count": 2}
                               for i in range(1, n["urls"] // 5)))
    fill(db, "downloads", ({"id": d, "guid": f"{d:032x}", "current_path": f"/home/u/Downloads/file{d}.pdf",
                            "target_path": f"/home/u/Downloads/file{d}.pdf", "start_time": now - d,
                            "received_bytes": 4096, "total_bytes": 4096, "state": 1, "hash": b"",
                            "end_time": now - d + 9, "mime_type": "application/pdf"}
                           for d in range(1, n["downloads"] + 1)))
    fill(db, "downloads_url_chains", ({"id": d, "chain_index": 0, "url": url(rng, d, n["sites"])}
                                      for d in range(1, n["downloads"] + 1)))
    close(db)

    db = database(os.path.join(profile, "Favicons"), "chromium-favicons.sql")
    icon = os.urandom(700)
    fill(db, "favicons", ({"id": i, "url": f"https://{site(i)}/favicon.ico", "icon_type": 1}
                          for i in range(1, n["favicons"] + 1)))
    fill(db, "favicon_bitmaps", ({"id": i, "icon_id": i, "image_data": icon, "width": 16, "height": 16}
                                 for i in range(1, n["favicons"] + 1)))
    fill(db, "icon_mapping", ({"id": i, "page_url": url(rng, i, n["sites"]), "icon_id": i % n["favicons"] + 1}
                              for i in range(1, n["urls"] // 2)))
    close(db)

    db = database(os.path.join(profile, "Cookies"), "chromium-cookies.sql")
    fill(db, "cookies", ({"creation_utc": now - c, "host_key": "." + site(c % n["sites"]), "top_frame_site_key": "",
                          "name": f"id{c}", "value": "", "encrypted_value": os.urandom(48), "path": "/",
                          "expires_utc": now + 10**13, "is_secure": 1, "last_access_utc": now,
                          "has_expires": 1, "is_persistent": 1, "priority": 1, "source_scheme": 2,
                          "source_port": 443, "last_update_utc": now} for c in range(n["cookies"])))
    close(db)

    db = database(os.path.join(profile, "Web Data"), "chromium-web-data.sql")
    fill(db, "autocomplete", ({"name": rng.choice(("q", "email", "name", "city")), "value": words(rng, 2) + str(i),
                               "value_lower": str(i), "date_created": 1_700_000_000 + i,
                               "date_last_used": 1_700_000_000 + i, "count": 2}
                              for i in range(n["form_entries"])))
    fill(db, "keywords", ({"short_name": f"Search {i}", "keyword": f"s{i}.example", "favicon_url": "",
                           "url": f"https://s{i}.example/?q={{searchTerms}}", "date_created": now}
                          for i in range(20)))
    close(db)

    db = database(os.path.join(profile, "Login Data"), "chromium-login-data.sql")
    fill(db, "logins", ({"origin_url": f"https://{site(i)}/login", "signon_realm": f"https://{site(i)}/",
                         "username_value": f"user{i}", "password_value": os.urandom(32), "date_created": now,
                         "blacklisted_by_user": 0, "scheme": 0} for i in range(300)))
    close(db)

    db = database(os.path.join(profile, "Top Sites"), "chromium-top-sites.sql")
    fill(db, "top_sites", ({"url": f"https://{site(i)}/", "url_rank": i, "title": site(i)} for i in range(20)))
    close(db)

    engagement = {f"https://{site(i)}:443,*": {"last_modified": "13370000000000000",
                                               "setting": {"rawScore": 5.5}} for i in range(n["sites"])}
    zoom = {site(i): {"last_modified": "13370000000000000", "zoom_level": 1.0} for i in range(n["sites"] // 10)}
    with open(os.path.join(profile, "Preferences"), "w") as f:
        json.dump({"browser": {"has_seen_welcome_page": True},
                   "partition": {"per_host_zoom_levels": {"x": zoom}},
                   "profile": {"content_settings": {"exceptions": {"site_engagement": engagement,
                                                                   "cookies": {}}},
                               "name": "Person 1"}}, f)

    spread(os.path.join(profile, "IndexedDB"), n["indexeddb_mb"], 50,
           lambda i: f"https_{site(i)}_0.indexeddb.leveldb", rng)
    files(os.path.join(profile, "Sessions"), 4, lambda r: f"Session_{r.getrandbits(50)}",
          lambda r: 256 << 10, rng)
    files(os.path.join(profile, "Session Storage"), 3, lambda r: f"{r.getrandbits(20):06d}.log",
          lambda r: 64 << 10, rng)
    cache = os.path.join(root, ".cache/chromium/Default")
    files(os.path.join(cache, "Cache/Cache_Data"), n["cache_files"], lambda r: f"{r.getrandbits(64):016x}_0",
          lambda r: r.randint(512, 8192), rng)
    files(os.path.join(cache, "Code Cache/js"), n["cache_files"] // 10, lambda r: f"{r.getrandbits(64):016x}_0",
          lambda r: r.randint(512, 16384), rng)
    files(os.path.join(data, "GrShaderCache"), 8, lambda r: f"data_{r.getrandbits(8)}", lambda r: 65536, rng)


def firefox(root, scale, rng):
    n = scaled(FIREFOX, scale)
    data = os.path.join(root, ".mozilla/firefox")
    name = "bench.default-release"
    profile = os.path.join(data, name)
    os.makedirs(profile, exist_ok=True)
    with open(os.path.join(data, "profiles.ini"), "w") as f:
        f.write(f"[Profile0]\nName=default-release\nIsRelative=1\nPath={name}\nDefault=1\n\n"
                "[General]\nStartWithLastProfile=1\nVersion=2\n")
    now = 1_790_000_000_000_000  # microseconds since 1970

    db = database(os.path.join(profile, "places.sqlite"), "firefox-places.sql")
    first = db.execute("SELECT max(id) FROM moz_places").fetchone()[0] + 1
    fill(db, "moz_origins", ({"id": 100 + s, "prefix": "https://", "host": site(s), "frecency": 100}
                             for s in range(n["sites"])))
    places = range(first, first + n["places"])
    fill(db, "moz_places", ({"id": p, "url": url(rng, p, n["sites"]), "title": words(rng, 6).title(),
                             "rev_host": site(p % n["sites"])[::-1] + ".", "visit_count": 2, "hidden": 0,
                             "typed": p % 9 == 0, "frecency": rng.randint(1, 5000), "last_visit_date": now - p,
                             "guid": f"{p:012x}", "foreign_count": 0, "url_hash": rng.getrandbits(47),
                             "description": words(rng, 12) if p % 3 == 0 else None,
                             "origin_id": 100 + p % n["sites"], "recalc_frecency": 0} for p in places))
    fill(db, "moz_historyvisits", ({"id": v, "from_visit": v - 1 if v % 4 else 0, "place_id": rng.choice(places),
                                    "visit_date": now - v * 300, "visit_type": 1, "session": 0, "source": 0}
                                   for v in range(1, n["visits"] + 1)))
    # Bookmarks: a folder in the menu holding them, each pointing at a visited place.
    fill(db, "moz_bookmarks", ({"id": 100 + b, "type": 1, "fk": first + b * 7 % n["places"], "parent": 2,
                                "position": 10 + b, "title": words(rng, 4), "dateAdded": now,
                                "lastModified": now, "guid": f"bm{b:010x}"} for b in range(n["bookmarks"])))
    db.execute("UPDATE moz_places SET foreign_count = 1 WHERE id IN (SELECT fk FROM moz_bookmarks)")
    fill(db, "moz_inputhistory", ({"place_id": first + i, "input": words(rng, 1)[:3] + str(i), "use_count": 1}
                                  for i in range(n["places"] // 100)))
    fill(db, "moz_places_metadata", ({"id": i, "place_id": first + i, "created_at": now + i,
                                      "total_view_time": 9000} for i in range(1, n["places"] // 10)))
    fill(db, "moz_anno_attributes", ({"id": i, "name": a} for i, a in
                                     enumerate(("downloads/destinationFileURI", "downloads/metaData"), 1)))
    fill(db, "moz_annos", ({"id": d, "place_id": first + d, "anno_attribute_id": 1 + d % 2,
                            "content": f"file:///home/u/Downloads/file{d}.pdf", "dateAdded": now}
                           for d in range(1, n["downloads"] + 1)))
    close(db)

    db = database(os.path.join(profile, "favicons.sqlite"), "firefox-favicons.sql")
    icon = os.urandom(700)
    fill(db, "moz_icons", ({"id": i, "icon_url": f"https://{site(i)}/favicon.ico", "fixed_icon_url_hash": i,
                            "width": 16, "root": 1, "data": icon} for i in range(1, n["favicons"] + 1)))
    fill(db, "moz_pages_w_icons", ({"id": i, "page_url": url(rng, i, n["sites"]), "page_url_hash": i}
                                   for i in range(1, n["favicons"] + 1)))
    fill(db, "moz_icons_to_pages", ({"page_id": i, "icon_id": i} for i in range(1, n["favicons"] + 1)))
    close(db)

    db = database(os.path.join(profile, "cookies.sqlite"), "firefox-cookies.sql")
    fill(db, "moz_cookies", ({"id": c, "name": f"id{c}", "value": f"{rng.getrandbits(128):x}",
                              "host": "." + site(c % n["sites"]), "path": "/", "expiry": 1_900_000_000,
                              "lastAccessed": now, "creationTime": now, "isSecure": 1}
                             for c in range(n["cookies"])))
    close(db)

    db = database(os.path.join(profile, "permissions.sqlite"), "firefox-permissions.sql")
    fill(db, "moz_perms", ({"id": i, "origin": f"https://{site(i)}", "type": "desktop-notification",
                            "permission": 2} for i in range(500)))
    close(db)

    spread(os.path.join(profile, "storage/default"), n["storage_mb"], 50,
           lambda i: f"https+++{site(i)}/idb", rng)
    files(os.path.join(profile, "sessionstore-backups"), 2, lambda r: f"recovery.{r.getrandbits(16)}.jsonlz4",
          lambda r: 512 << 10, rng)
    cache = os.path.join(root, ".cache/mozilla/firefox", name)
    files(os.path.join(cache, "cache2/entries"), n["cache_files"], lambda r: f"{r.getrandbits(160):040X}",
          lambda r: r.randint(512, 8192), rng)
    files(os.path.join(cache, "thumbnails"), 20, lambda r: f"{r.getrandbits(128):032x}.png",
          lambda r: 20000, rng)


def main():
    if len(sys.argv) != 4 or sys.argv[1] not in ("chromium", "firefox"):
        sys.exit(__doc__.strip().splitlines()[-1])
    browser, root, scale = sys.argv[1], sys.argv[2], float(sys.argv[3])
    (chromium if browser == "chromium" else firefox)(root, scale, random.Random(2026))


if __name__ == "__main__":
    main()
