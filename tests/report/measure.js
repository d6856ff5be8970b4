'use strict';

// Tells how long ten thousand machines take, from the start of loading until they can be seen.

const fs = require('node:fs');
const {launch, pathOf, addressOf, isDrawn} = require('./browser.js');

const timed = async (page, action) => {
  const begin = performance.now();
  await action();
  await isDrawn(page);
  return Math.round(performance.now() - begin);
};

const main = async () => {
  const bytes = fs.statSync(pathOf(10000)).size;
  console.log(`${bytes} bytes, ${Math.round(bytes / 10000)} for each machine`);
  for (let round = 0; round < 5; ++round) {
    const browser = await launch();
    const page = await browser.newPage({viewport: {width: 1280, height: 900}});
    const opened = await timed(page, () => page.goto(addressOf(10000)));
    const sorted = await timed(page, () => page.click('#machines button'));
    const filtered = await timed(page, () => page.fill('[name=text]', 'host012'));
    console.log(`opened in ${opened} ms, sorted in ${sorted} ms, filtered in ${filtered} ms`);
    await browser.close();
  }
};

main();
