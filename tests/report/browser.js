'use strict';

// How the browser is started here, and where the reports are.

const {chromium} = require('playwright-core');
const path = require('node:path');

const kArguments = [
  '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
  '--disable-background-networking', '--disable-component-update', '--disable-sync',
];

exports.launch = () => chromium.launch({executablePath: '/usr/bin/chromium', args: kArguments});

exports.pathOf = (report) => path.join(process.env.HOTFIX_REPORTS, `${report}.html`);
exports.addressOf = (report) => `file://${exports.pathOf(report)}`;

// When all that was done to the page can be seen.
exports.isDrawn = (page) => page.evaluate(
    () => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done))));
