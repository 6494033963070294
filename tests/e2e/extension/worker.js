// One extension for both browsers (Chromium runs it as a service worker, Firefox as a background
// script). It keeps a value in each store an extension has, chrome.storage.local, IndexedDB and, in
// Chromium, a storage bucket's IndexedDB, and reads them back as "STORAGE/INDEXEDDB[/BUCKET]"; it pins a tab beside one (of the site) that is not pinned, and
// lists the pinned tabs. Chromium's test calls these functions in the worker; Firefox's asks through
// a tab's address ("about:blank#corvella-keep" or "#corvella-read"), and the tab then goes to
// "about:blank#values=RESULT".
const idb = (keep, factory = indexedDB) => new Promise(resolve => {
  const open = factory.open('kept', 1);
  open.onupgradeneeded = () => open.result.createObjectStore('values');
  open.onsuccess = () => {
    const tx = open.result.transaction('values', 'readwrite');
    const store = tx.objectStore('values');
    if (keep)
      store.put('yes', 'kept');
    const get = store.get('kept');
    tx.oncomplete = () => resolve(get.result);
    tx.onerror = () => resolve(undefined);
  };
  open.onerror = () => resolve(undefined);
});

// A storage bucket of its own, where the browser has them (Chromium): its IndexedDB.
const bucket = async () => navigator.storageBuckets && (await navigator.storageBuckets.open('vault')).indexedDB;

self.keep = async () => {
  await chrome.storage.local.set({kept: 'yes'});
  await idb(true);
  const vault = await bucket();
  if (vault)
    await idb(true, vault);
  return 'kept';
};

self.read = async () => {
  const vault = await bucket();
  return [(await chrome.storage.local.get('kept')).kept, await idb(false), ...(vault ? [await idb(false, vault)] : [])]
      .join('/');
};

self.pin = async notPinned => {
  await chrome.tabs.create({url: 'about:blank#kept-pinned', pinned: true});
  await chrome.tabs.create({url: notPinned});
};

self.pinned = async () => {
  // The last session's tabs come back while the browser starts.
  for (let tries = 0; tries < 50; ++tries) {
    const pinned = (await chrome.tabs.query({pinned: true})).map(tab => tab.url);
    if (pinned.length)
      return pinned.join(',');
    await new Promise(resolve => setTimeout(resolve, 100));
  }
  return '';
};

chrome.tabs.onUpdated.addListener(async (tabId, change) => {
  const asked = /^about:blank#corvella-(keep|read)$/.exec(change.url || '');
  if (asked)
    await chrome.tabs.update(tabId, {url: 'about:blank#values=' + await self[asked[1]]()});
});
