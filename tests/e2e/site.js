// A local web site that leaves every kind of trace a visit can leave, each holding the marker text.
// Its host, "corvella-trail.localhost", is a secure context that both browsers send to this machine.
// The same server is also the site the user keeps ("kept-site.localhost"): "/signin" signs the user in
// (a cookie, a token in local storage, a record in IndexedDB), "/whoami" says what it still knows.
'use strict';
const http = require('http');

const MARKER = 'corvella-trail';
// A 1x1 PNG.
const ICON = Buffer.from(
    'iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR4nGP4z8DwHwAFAAH/iZk9HQAAAABJRU5ErkJggg==', 'base64');

const home = `<!doctype html><html><head><title>${MARKER} home</title>
<link rel="icon" href="/favicon.png"></head><body>
<a href="/form">form</a> <a href="/download">download</a>
<script>
window.traces = (async () => {
  document.cookie = 'script=${MARKER}; max-age=86400; path=/';
  localStorage.setItem('local', '${MARKER}');
  sessionStorage.setItem('session', '${MARKER}');
  await new Promise((resolve, reject) => {
    const open = indexedDB.open('${MARKER}-db', 1);
    open.onupgradeneeded = () => open.result.createObjectStore('store');
    open.onsuccess = () => {
      const tx = open.result.transaction('store', 'readwrite');
      tx.objectStore('store').put('${MARKER}', 'key');
      tx.oncomplete = resolve;
      tx.onerror = reject;
    };
    open.onerror = reject;
  });
  const cache = await caches.open('${MARKER}-cache');
  await cache.put('/cached', new Response('${MARKER}'));
  const registration = await navigator.serviceWorker.register('/sw.js');
  await navigator.serviceWorker.ready;
  return registration.active ? 'ok' : 'no worker';
})().catch(error => 'failed: ' + error);
</script></body></html>`;

const form = `<!doctype html><html><head><title>${MARKER} form</title></head><body>
<form action="/submitted" method="get" autocomplete="on">
<input id="email" name="email" type="email" autocomplete="email">
<input id="query" name="query" type="text">
<button id="send" type="submit">Send</button></form></body></html>`;

// The kept site's account in IndexedDB: put, or read back (undefined when there is none).
const account = `const account = value => new Promise(resolve => {
  const open = indexedDB.open('account', 1);
  open.onupgradeneeded = () => open.result.createObjectStore('store');
  open.onsuccess = () => {
    const tx = open.result.transaction('store', 'readwrite');
    const store = tx.objectStore('store');
    if (value) store.put(value, 'user');
    const get = store.get('user');
    tx.oncomplete = () => resolve(get.result);
    tx.onerror = () => resolve(undefined);
  };
  open.onerror = () => resolve(undefined);
});`;

const signin = `<!doctype html><title>signed in</title><script>${account}
window.result = (async () => {
  document.cookie = 'user=alice; max-age=86400; path=/';
  localStorage.setItem('token', 't-alice');
  return await account('alice') === 'alice' ? 'signed in' : 'not signed in';
})();
</script>`;

const whoami = `<!doctype html><title>who am I</title><script>${account}
window.result = (async () => [document.cookie.includes('user=alice') ? 'cookie' : 'no cookie',
  localStorage.getItem('token') || 'no token', (await account()) || 'no record'].join('/'))();
</script>`;

const worker = `self.addEventListener('install', event => event.waitUntil(
  caches.open('${MARKER}-worker').then(cache => cache.put('/from-worker', new Response('${MARKER}')))));
self.addEventListener('activate', event => event.waitUntil(self.clients.claim()));
self.addEventListener('fetch', () => {});`;

function serve(request, response) {
    const path = new URL(request.url, 'http://x').pathname;
    const send = (type, body, headers = {}) => {
        response.writeHead(200, {'Content-Type': type, ...headers});
        response.end(body);
    };
    if (path === '/')
        return send('text/html', home, {'Set-Cookie': `header=${MARKER}; Max-Age=86400; Path=/`});
    if (path === '/favicon.png')
        return send('image/png', ICON, {'Cache-Control': 'max-age=86400'});
    if (path === '/form')
        return send('text/html', form);
    if (path === '/submitted')
        return send('text/html', `<title>${MARKER} sent</title><a id="download" href="/download">download</a>`);
    if (path === '/signin')
        return send('text/html', signin, {'Set-Cookie': 'session=alice; Max-Age=86400; Path=/'});
    if (path === '/whoami')
        return send('text/html', whoami);
    if (path === '/sw.js')
        return send('text/javascript', worker);
    if (path === '/download')
        return send('text/plain', `${MARKER} download\n`,
                    {'Content-Disposition': `attachment; filename="${MARKER}.txt"`});
    response.writeHead(404);
    response.end();
}

// Listens on the loopback interface, on the port (none: a free one), and answers with the server.
function start(port = 0) {
    return new Promise((resolve, reject) => {
        const server = http.createServer(serve);
        server.on('error', reject);
        server.listen(port, '127.0.0.1', () => resolve(server));
    });
}

module.exports = {MARKER, start};
