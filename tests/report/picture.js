'use strict';

// Takes the picture of a report that the documents show, to the file that is named.

const {launch, addressOf, isDrawn} = require('./browser.js');

const main = async () => {
  const browser = await launch();
  const page = await browser.newPage({viewport: {width: 1280, height: 1560}, deviceScaleFactor: 0.75});
  await page.goto(addressOf('picture'));
  await page.locator('#machines summary').nth(2).click();
  await page.evaluate(() => scrollTo(0, 0));
  await isDrawn(page);
  await page.screenshot({path: process.argv[2]});
  await browser.close();
};

main();
