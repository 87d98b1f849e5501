// Takes pictures of the built page while it plays its sample: what scripts/make_pictures.sh makes one of.
//   node page_pictures.mjs FOLDER_OF_THE_PAGE FOLDER_FOR_PICTURES
import { mkdirSync } from 'node:fs';
import { join } from 'node:path';
import { openPage } from './open_page.mjs';

const [pageFolder, pictures] = process.argv.slice(2);
mkdirSync(pictures, { recursive: true });
const { page, close } = await openPage(pageFolder, { width: 960, height: 540 });

const wait = () => page.evaluate(() => new Promise((done) => { requestAnimationFrame(() => requestAnimationFrame(done)); }));
await wait();

const acts = { 0: ['play off', 'clip run'], 12: ['show skeleton on'], 20: ['show skeleton off', 'blend 1 walk 1'],
  30: ['blend 1 none', 'clip walk', 'surface normals'], 36: ['surface materials', 'show dark on'] };
for (let i = 0; i < 46; ++i) {
  for (const line of acts[i] ?? []) await page.evaluate((text) => window.tw2.execute(text), line);
  await page.evaluate((time) => window.tw2.execute(`seek ${time}`), (i * 0.1) % 1);
  await wait();
  await page.screenshot({ path: join(pictures, `${String(i).padStart(3, '0')}.png`) });
}
await close();
