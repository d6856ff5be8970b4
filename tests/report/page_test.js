'use strict';

// The page in a browser: for everybody's eyes, hands and screens.

const {after, before, describe, it} = require('node:test');
const assert = require('node:assert/strict');
const fs = require('node:fs');
const path = require('node:path');
const {launch, pathOf, addressOf, isDrawn} = require('./browser.js');

const kAxe = fs.readFileSync(require.resolve('axe-core/axe.min.js'), 'utf8');
const kMostBytes = 1000;  // for each machine

let browser;
before(async () => { browser = await launch(); });
after(() => browser.close());

const open = async (report, options = {}) => {
  const context = await browser.newContext({viewport: {width: 1280, height: 900}, ...options});
  const page = await context.newPage();
  page.asked = [];
  page.refused = [];
  page.on('request', (request) => page.asked.push(request.url()));
  page.on('console', (message) => page.refused.push(message.text()));
  page.on('pageerror', (error) => page.refused.push(error.message));
  await page.goto(addressOf(report));
  return page;
};

const namesIn = (page) => page.locator('#machines tbody th').allTextContents();
const columnIn = (page, number) =>
    page.locator(`#machines tbody td:nth-child(${number})`).allTextContents();
const toldIn = (page) => page.locator('output').textContent();

// What axe finds, in words. It is brought in past what the page allows.
const findingsIn = async (page) => {
  const {violations} = await page.evaluate(async (source) => {
    eval(source);
    return await window.axe.run(document, {
      runOnly: ['wcag2a', 'wcag2aa', 'wcag21a', 'wcag21aa', 'wcag22aa', 'best-practice'],
    });
  }, kAxe);
  return violations.map((one) => `${one.id}: ${one.nodes.map((node) => node.html).join('; ')}`);
};

describe('at each width, light and dark', () => {
  for (const width of [360, 768, 1280]) {
    for (const colorScheme of ['light', 'dark']) {
      it(`${width} ${colorScheme}`, async () => {
        const page = await open('broken', {viewport: {width, height: 900}, colorScheme, bypassCSP: true});
        for (const index of [0, 2, 6, 7, 9]) await page.locator('#machines summary').nth(index).click();
        await page.locator('details:has(dl) summary').click();
        await isDrawn(page);

        const size = await page.evaluate(() => document.documentElement.scrollWidth);
        assert.ok(size <= width, `${size} is wider than the window`);
        assert.deepEqual(await findingsIn(page), []);
        const back = await page.evaluate(() => getComputedStyle(document.body).backgroundColor);
        assert.equal(back, colorScheme === 'dark' ? 'rgb(15, 20, 25)' : 'rgb(255, 255, 255)');
        await page.screenshot({
          path: path.join(process.env.HOTFIX_SHOTS, `${width}-${colorScheme}.png`), fullPage: true,
        });
        await page.context().close();
      });
    }
  }
});

describe('without script', () => {
  it('everything can be read', async () => {
    const page = await open(40, {javaScriptEnabled: false});

    assert.equal((await namesIn(page)).length, 40);
    assert.equal(await page.locator('form').isVisible(), false);
    assert.equal(await page.locator('#machines button').count(), 0);
    const first = page.locator('#machines tbody tr').first();
    assert.equal(await first.locator('.timeline').isVisible(), false);
    await first.locator('summary').click();
    assert.equal(await first.locator('.timeline').isVisible(), true);
    assert.match(await first.locator('.lines').textContent(), /\+0 s Recover: 6 s/);
    await page.locator('#failures a').first().click();
    assert.match(page.url(), /#m\d+$/);
    await page.context().close();
  });
});

describe('by keyboard', () => {
  const focusOn = async (page, selector) => {
    await page.evaluate(() => document.activeElement.blur());
    for (let presses = 0; presses < 100; ++presses) {
      await page.keyboard.press('Tab');
      if (await page.evaluate((one) => document.activeElement.matches(one), selector)) return;
    }
    assert.fail(`${selector} cannot be reached`);
  };
  const head = (number) => `#machines th:nth-child(${number}) button`;

  it('the machines are sorted', async () => {
    const page = await open(40);
    const first = await namesIn(page);
    await focusOn(page, head(1));

    await page.keyboard.press('Enter');
    const ascending = await namesIn(page);
    assert.equal(await page.getAttribute('#machines th:nth-child(1)', 'aria-sort'), 'ascending');
    assert.notDeepEqual(ascending, first);
    assert.deepEqual(ascending.slice(1), [...ascending.slice(1)].sort());

    await page.keyboard.press('Space');
    assert.deepEqual(await namesIn(page), [...ascending].reverse());
    assert.equal(await page.getAttribute('#machines th:nth-child(1)', 'aria-sort'), 'descending');
    await page.context().close();
  });

  it('durations are sorted by their length', async () => {
    const page = await open(40);
    await focusOn(page, head(4));

    await page.keyboard.press('Enter');

    const lengths = (await columnIn(page, 4)).map((text) => parseInt(text, 10) || 0);
    assert.deepEqual(lengths, [...lengths].sort((one, other) => one - other));
    assert.equal(lengths.at(-1), 33);
    assert.equal(await page.getAttribute('#machines th:nth-child(1)', 'aria-sort'), null);
    await page.context().close();
  });

  it('they are filtered by a text', async () => {
    const page = await open(40);
    assert.equal(await toldIn(page), '40 of 40 machines');
    await focusOn(page, '[name=text]');

    await page.keyboard.type('HOST0001');

    assert.equal(await toldIn(page), '10 of 40 machines');
    assert.ok((await namesIn(page)).every((name) => name.startsWith('host0001')));
    for (let letter = 0; letter < 8; ++letter) await page.keyboard.press('Backspace');
    assert.equal((await namesIn(page)).length, 40);
    await page.keyboard.type('6.2.3.9');
    assert.equal(await toldIn(page), '2 of 40 machines');
    await page.keyboard.press('Enter');
    assert.equal(await toldIn(page), '2 of 40 machines');
    await page.context().close();
  });

  it('they are filtered by their result', async () => {
    const page = await open(40);
    await focusOn(page, '[name=result]');

    await page.keyboard.type('Prov');

    assert.equal(await toldIn(page), '2 of 40 machines');
    assert.deepEqual(await page.locator('#machines summary').allTextContents(),
                     ['Provisioning failed', 'Provisioning failed']);
    assert.deepEqual(await page.locator('[name=result] option').allTextContents(),
                     ['All', 'Application running', 'Higher hotfix installed', 'Hotfix installed',
                      'Needs attention', 'Provisioning failed']);
    await page.context().close();
  });

  it('a link leads to a machine that the filter took away', async () => {
    const page = await open(40);
    await page.fill('[name=text]', 'host00001');
    assert.equal(await toldIn(page), '1 of 40 machines');
    await focusOn(page, '#failures a');

    await page.keyboard.press('Enter');

    await page.waitForFunction(() => document.querySelector('#machines tr:target'));
    assert.equal(await toldIn(page), '40 of 40 machines');
    await page.context().close();
  });
});

describe('what means harm', () => {
  it('is text, and nothing but the page is asked for', async () => {
    const page = await open(40);

    assert.ok((await namesIn(page)).some((name) => name.includes('<script>window.harmed=1</script>')));
    assert.equal(await page.evaluate(() => window.harmed), undefined);
    assert.deepEqual(page.asked, [addressOf(40)]);
    assert.deepEqual(page.refused, []);
    await page.context().close();
  });

  it('would be refused all the same', async () => {
    const page = await open(40);

    await page.evaluate(() => {
      const script = document.createElement('script');
      script.textContent = 'window.harmed = 1';
      document.body.append(script);
      document.body.insertAdjacentHTML('beforeend', '<img src="http://example.test/" onerror="window.harmed = 1">'
          + '<p id=styled style="color: red">');
    });
    await isDrawn(page);

    assert.equal(await page.evaluate(() => window.harmed), undefined);
    assert.notEqual(await page.evaluate(() => getComputedStyle(document.getElementById('styled')).color),
                    'rgb(255, 0, 0)');
    assert.ok(page.refused.some((line) => /script/i.test(line)), page.refused.join('\n'));
    assert.ok(page.refused.some((line) => /img-src|image/i.test(line)), page.refused.join('\n'));
    await page.context().close();
  });
});

describe('on paper', () => {
  it('what only works on a screen is left out', async () => {
    const page = await open(40, {colorScheme: 'dark'});
    await page.emulateMedia({media: 'print'});

    assert.equal(await page.locator('form').isVisible(), false);
    assert.equal(await page.evaluate(() => getComputedStyle(document.body).backgroundColor), 'rgb(255, 255, 255)');
    const text = (await page.pdf()).toString('latin1');
    assert.ok((text.match(/\/Type \/Page\b/g) || []).length >= 2);
    await page.context().close();
  });
});

describe('ten thousand machines', () => {
  it('can be opened, sorted and filtered', async () => {
    assert.ok(fs.statSync(pathOf(10000)).size <= 10000 * kMostBytes);
    const page = await open(10000);

    assert.equal(await toldIn(page), '10000 of 10000 machines');
    await page.click('#machines th:nth-child(1) button');
    const names = await namesIn(page);
    assert.equal(names.length, 10000);
    assert.deepEqual(names.slice(1), [...names.slice(1)].sort());
    await page.fill('[name=text]', 'host0999');
    assert.equal(await toldIn(page), '10 of 10000 machines');
    assert.equal(await page.locator('#machines tbody:visible').count(), 1);
    await page.context().close();
  });
});
