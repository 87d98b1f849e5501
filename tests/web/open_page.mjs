// Serves the built page on a free port of this machine and opens it in headless Chromium.
import { createServer } from 'node:http';
import { existsSync, readFileSync } from 'node:fs';
import { extname, join } from 'node:path';
import puppeteer from 'puppeteer-core';

const kinds = { '.html': 'text/html', '.js': 'text/javascript', '.css': 'text/css', '.wasm': 'application/wasm' };

/** Waits until the sample plays. Returns the page, what it complained of, whom it asked, and how to close all of it. */
export async function openPage(folder, viewport) {
  const server = createServer((request, response) => {
    const name = join(folder, request.url === '/' ? 'index.html' : decodeURIComponent(request.url.split('?')[0]));
    if (!existsSync(name)) {
      response.writeHead(404).end();
      return;
    }
    response.writeHead(200, { 'content-type': kinds[extname(name)] ?? 'application/octet-stream' });
    response.end(readFileSync(name));
  });
  await new Promise((done) => { server.listen(0, '127.0.0.1', done); });
  const browser = await puppeteer.launch({ executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
    args: ['--no-sandbox', '--use-gl=angle', '--use-angle=swiftshader', '--enable-unsafe-swiftshader'] });
  const page = await browser.newPage();
  const complaints = [];
  const strangers = [];
  await page.setViewport(viewport);
  page.on('console', (message) => { if (message.type() === 'error') complaints.push(message.text()); });
  page.on('pageerror', (error) => complaints.push(String(error)));
  page.on('request', (request) => {
    if (!/^(http:\/\/127\.0\.0\.1|blob:|data:)/.test(request.url())) strangers.push(request.url());
  });
  const close = async () => {
    await browser.close();
    server.close();
  };
  const begin = performance.now();
  await page.goto(`http://127.0.0.1:${server.address().port}`);
  await page.waitForFunction(() => window.tw2?.state().period > 0, { timeout: 60000 });
  return { page, complaints, strangers, close, milliseconds: performance.now() - begin };
}
