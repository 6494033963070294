-- favicons.sqlite as made by Mozilla Firefox 153.7.0esr
PRAGMA page_size=32768;
PRAGMA user_version=0;
PRAGMA journal_mode=wal;
CREATE TABLE moz_icons ( id INTEGER PRIMARY KEY, icon_url TEXT NOT NULL, fixed_icon_url_hash INTEGER NOT NULL, width INTEGER NOT NULL DEFAULT 0, root INTEGER NOT NULL DEFAULT 0, color INTEGER, expire_ms INTEGER NOT NULL DEFAULT 0, flags INTEGER NOT NULL DEFAULT 0, data BLOB );
CREATE INDEX moz_icons_iconurlhashindex ON moz_icons (fixed_icon_url_hash);
CREATE TABLE moz_pages_w_icons ( id INTEGER PRIMARY KEY, page_url TEXT NOT NULL, page_url_hash INTEGER NOT NULL );
CREATE INDEX moz_pages_w_icons_urlhashindex ON moz_pages_w_icons (page_url_hash);
CREATE TABLE moz_icons_to_pages ( page_id INTEGER NOT NULL, icon_id INTEGER NOT NULL, expire_ms INTEGER NOT NULL DEFAULT 0, PRIMARY KEY (page_id, icon_id), FOREIGN KEY (page_id) REFERENCES moz_pages_w_icons ON DELETE CASCADE, FOREIGN KEY (icon_id) REFERENCES moz_icons ON DELETE CASCADE ) WITHOUT ROWID ;
CREATE TABLE sqlite_stat1(tbl,idx,stat);
