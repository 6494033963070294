-- Top Sites as made by Chromium 156.0.8078.79 built on Debian GNU/Linux 12 (bookworm)
PRAGMA page_size=4096;
PRAGMA user_version=0;
PRAGMA journal_mode=delete;
CREATE TABLE meta(key LONGVARCHAR NOT NULL UNIQUE PRIMARY KEY, value LONGVARCHAR);
CREATE TABLE top_sites(url TEXT NOT NULL PRIMARY KEY,url_rank INTEGER NOT NULL,title TEXT NOT NULL);
INSERT INTO meta VALUES('mmap_status','-1');
INSERT INTO meta VALUES('version','5');
INSERT INTO meta VALUES('last_compatible_version','5');
