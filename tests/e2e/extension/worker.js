// Keeps a value in each store an extension has: chrome.storage.local (LevelDB) and IndexedDB.
self.keep = async () => {
  await chrome.storage.local.set({kept: 'yes'});
  await new Promise((resolve, reject) => {
    const open = indexedDB.open('kept', 1);
    open.onupgradeneeded = () => open.result.createObjectStore('values');
    open.onsuccess = () => { const tx = open.result.transaction('values', 'readwrite');
      tx.objectStore('values').put('yes', 'kept'); tx.oncomplete = resolve; tx.onerror = reject; };
    open.onerror = reject;
  });
  return 'kept';
};
self.read = async () => {
  const local = (await chrome.storage.local.get('kept')).kept;
  const idb = await new Promise(resolve => {
    const open = indexedDB.open('kept', 1);
    open.onupgradeneeded = () => open.result.createObjectStore('values');
    open.onsuccess = () => { const get = open.result.transaction('values').objectStore('values').get('kept');
      get.onsuccess = () => resolve(get.result); get.onerror = () => resolve(undefined); };
    open.onerror = () => resolve(undefined);
  });
  return `${local}/${idb}`;
};
