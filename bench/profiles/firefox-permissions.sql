-- permissions.sqlite as made by Mozilla Firefox 153.7.0esr
PRAGMA page_size=32768;
PRAGMA user_version=13;
PRAGMA journal_mode=delete;
CREATE TABLE moz_perms ( id INTEGER PRIMARY KEY,origin TEXT,type TEXT,permission INTEGER,expireType INTEGER,expireTime INTEGER,modificationTime INTEGER);
CREATE TABLE moz_hosts ( id INTEGER PRIMARY KEY,host TEXT,type TEXT,permission INTEGER,expireType INTEGER,expireTime INTEGER,modificationTime INTEGER,isInBrowserElement INTEGER);
CREATE TABLE moz_origin_interactions ( origin TEXT PRIMARY KEY,lastInteractionTime INTEGER);
