// Drives Debian's Chromium or Firefox ESR on a profile of the test user.
//   node browse.js visit  chromium|firefox PROFILE DOWNLOADS  -- leaves every trace of the test site
//   node browse.js open   chromium|firefox PROFILE            -- opens a blank page and quits
//   node browse.js reopen chromium|firefox PROFILE            -- opens a page of another site, prints its title
//   node browse.js restore firefox PROFILE                    -- starts with the last session, prints each tab's URL
//   node browse.js keep|read chromium PROFILE EXTENSION       -- with the unpacked extension: keeps a value in
//                                                               its storage and IndexedDB and pins a tab, or
//                                                               prints them and the pinned tabs
//   node browse.js signin|whoami chromium|firefox PROFILE PORT -- signs in to the kept site on the port, or
//                                                               prints what it still knows ("cookie/token/record")
//   node browse.js search firefox PROFILE [ENGINE]           -- chooses the default search engine (by its id) in
//                                                               Firefox's settings page, prints the default's id
//   node browse.js keep|read firefox PROFILE                  -- the same with the add-on installed in the
//                                                               profile (extensions/kept@corvella.test.xpi)
// Exits non-zero with a message when the browser cannot be driven.
'use strict';
const puppeteer = require('puppeteer-core');
const site = require('./site');

const [command, browserName, profile, downloads] = process.argv.slice(2);
const asksExtension = command === 'keep' || command === 'read';
const extension = asksExtension ? downloads : null; // Chromium's unpacked extension
const HOST = 'corvella-trail.localhost', KEPT_HOST = 'kept-site.localhost';
// The add-on's folder in Firefox's storage is named by this id, which every start is told: the profile's
// prefs.js, where Firefox would keep it, is put back as it was when the browser closes.
const ADDON_UUID = '6d1c2a52-8d4e-4b8a-9a57-3f1e0c6b7a10';

function launch(extraPrefs = {}, args = []) {
    if (browserName === 'chromium')
        return puppeteer.launch({
            executablePath: '/usr/bin/chromium',
            headless: true,
            userDataDir: profile,
            args: ['--no-sandbox', '--disable-gpu', '--no-first-run',
                   ...(extension ? [`--load-extension=${extension}`, `--disable-extensions-except=${extension}`] : [])],
        });
    return puppeteer.launch({
        browser: 'firefox',
        executablePath: '/usr/bin/firefox-esr',
        headless: true,
        userDataDir: profile,
        args,
        extraPrefsFirefox: {
            'browser.download.folderList': 2,
            'browser.download.dir': downloads || '',
            'browser.download.useDownloadDir': true,
            'browser.download.always_ask_before_handling_new_types': false,
            'browser.helperApps.neverAsk.saveToDisk': 'text/plain',
            'signon.rememberSignons': true,
            // The test's add-on, unsigned, installed by placing it in the profile.
            'xpinstall.signatures.required': false,
            'extensions.autoDisableScopes': 0,
            'extensions.webextensions.uuids': JSON.stringify({'kept@corvella.test': ADDON_UUID}),
            ...extraPrefs,
        },
    });
}

async function visit(browser) {
    const server = await site.start();
    const origin = `http://${HOST}:${server.address().port}`;
    try {
        const page = await browser.newPage();
        await page.goto(origin + '/', {waitUntil: 'load'});
        const traces = await page.evaluate(() => window.traces);
        if (traces !== 'ok')
            throw new Error('the site could not leave its traces: ' + traces);
        await page.goto(origin + '/form', {waitUntil: 'load'});
        await page.type('#email', site.MARKER + '@example.org');
        await page.type('#query', site.MARKER);
        await Promise.all([page.waitForNavigation(), page.click('#send')]);
        if (browserName === 'chromium') {
            const session = await browser.target().createCDPSession();
            await session.send('Browser.setDownloadBehavior', {behavior: 'allow', downloadPath: downloads});
        }
        await page.click('#download');
        await new Promise(resolve => setTimeout(resolve, 3000));
    } finally {
        server.close();
    }
}

// The default engine as the user chooses it, in the select of Firefox's search settings. The page may
// fill the select again while the search service starts (a run once read it empty just after it held a
// value), so a value counts once it has held for a second.
async function searchEngine(browser, chosen) {
    const page = await browser.newPage();
    page.goto('about:preferences#search').catch(() => {}); // a settings page never reports its load
    const settled = () => page.waitForFunction(() => {
        const value = document.getElementById('defaultEngineNormal')?.value;
        const seen = window.corvellaSeen;
        window.corvellaSeen = {value, since: value && value === seen?.value ? seen.since : Date.now()};
        return value && Date.now() - window.corvellaSeen.since >= 1000 ? value : null;
    }, {timeout: 20000, polling: 250}).then(handle => handle.jsonValue());
    if (chosen && await settled() !== chosen) {
        await page.evaluate(chosen => {
            const select = document.getElementById('defaultEngineNormal');
            select.value = chosen;
            select.dispatchEvent(new Event('change', {bubbles: true}));
        }, chosen);
        await new Promise(resolve => setTimeout(resolve, 3000)); // Firefox saves the choice a moment later
    }
    return settled();
}

(async () => {
    // Restoring: the last session comes back as Firefox's "open previous windows and tabs" does it.
    // Its settings pages open only to a remote control allowed into the browser's own pages.
    const browser = await launch(command === 'restore' ? {'browser.startup.page': 3} : {},
                                 command === 'search' ? ['--remote-allow-system-access'] : []);
    try {
        if (command === 'visit') {
            await visit(browser);
        } else if (asksExtension && browserName === 'chromium') {
            const target = await browser.waitForTarget(
                t => t.type() === 'service_worker' && t.url().startsWith('chrome-extension://'), {timeout: 15000});
            const worker = await target.worker();
            console.log(await worker.evaluate(command === 'keep' ? `self.pin('http://${HOST}/not-pinned').then(self.keep)`
                                                                 : 'self.read().then(async v => v + "/" + await self.pinned())'));
        } else if (asksExtension) {
            const page = await browser.newPage();
            await page.goto(`about:blank#corvella-${command}`);
            await page.waitForFunction(() => location.hash.startsWith('#values='), {timeout: 15000});
            console.log(decodeURIComponent(new URL(page.url()).hash.slice('#values='.length)));
        } else if (command === 'signin' || command === 'whoami') {
            // The kept site's origin is the same on every visit: its storage is the origin's.
            const server = await site.start(Number(downloads));
            try {
                const page = await browser.newPage();
                await page.goto(`http://${KEPT_HOST}:${downloads}/${command}`, {waitUntil: 'load'});
                console.log(await page.evaluate(() => window.result));
            } finally {
                server.close();
            }
        } else if (command === 'search') {
            console.log(await searchEngine(browser, downloads));
        } else if (command === 'restore') {
            await new Promise(resolve => setTimeout(resolve, 3000));
            for (const page of await browser.pages())
                console.log(page.url());
        } else if (command === 'reopen') {
            const page = await browser.newPage();
            await page.goto('data:text/html,<title>reopened</title>', {waitUntil: 'load'});
            console.log(await page.title());
        } else {
            const page = await browser.newPage();
            await page.goto('about:blank');
        }
    } finally {
        await browser.close();
    }
})().catch(error => {
    console.error(`${browserName} ${command}: ${error.message}`);
    process.exit(1);
});
