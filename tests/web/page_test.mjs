// Drives the built page in headless Chromium as a person would: loads, plays, scrubs, blends, opens files, and looks for
// the same picture that `tw2 render` draws. Run by scripts/check_page.sh.
//   node page_test.mjs FOLDER_OF_THE_PAGE TW2_COMMAND SAMPLE_FOLDER WORK_FOLDER
import { execFileSync } from 'node:child_process';
import { mkdirSync, readFileSync, readdirSync, writeFileSync } from 'node:fs';
import { extname, join } from 'node:path';
import test, { after, before } from 'node:test';
import assert from 'node:assert/strict';
import { PNG } from 'pngjs';
import { openPage } from './open_page.mjs';

const [pageFolder, tw2, sample, work] = process.argv.slice(2);
let page;
let complaints;
let strangers;
let close = () => {};

before(async () => {
  mkdirSync(work, { recursive: true });
  let milliseconds;
  ({ page, complaints, strangers, close, milliseconds } = await openPage(pageFolder, { width: 1200, height: 700 }));
  console.log(`# the first picture came after ${milliseconds.toFixed(0)} ms`);
});

after(() => close());

const state = () => page.evaluate(() => window.tw2.state());
const object = () => page.evaluate(() => window.tw2.object());
const run = async (...lines) => {
  for (const line of lines) assert.ok(await page.evaluate((text) => window.tw2.execute(text), line), line);
  await page.evaluate(() => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done))));
};
const open = (files) => page.evaluate(async (list) => {
  const decode = (text) => Uint8Array.from(atob(text), (letter) => letter.charCodeAt(0));
  await window.tw2.open(list.map(({ name, bytes }) => ({ name, bytes: decode(bytes) })));
  return document.getElementById('message').textContent;
}, files.map(([name, bytes]) => ({ name, bytes: bytes.toString('base64') })));
const sampleFiles = () => readdirSync(sample, { recursive: true }).filter((name) => extname(name) && !name.includes('walker'))
  .map((name) => [name, readFileSync(join(sample, name))]);

test('begins with the sample playing', async () => {
  const first = (await state()).time;
  await page.waitForFunction((before) => window.tw2.state().time !== before, { timeout: 20000 }, first);
  assert.match((await object()).script, /walker\.script$/);
  await page.screenshot({ path: join(work, 'page.png') });
});

const slide = (id, value) => page.$eval(id, (slider, to) => { slider.value = to; slider.dispatchEvent(new Event('input')); }, value);

test('puts the feet on ground that rises, and lets the head look at a point', async () => {
  await page.$eval('#ground-section', (section) => { section.open = true; });
  await run('play off', 'clip walk', 'seek 0.3', 'look corner');
  await slide('#slope', 14);
  await slide('#towards', 90);
  await page.click('#plant');
  await run();
  const now = await state();
  assert.deepEqual([now.slope, now.towards, now.planting], [14, 90, true]);
  assert.deepEqual(now.legs.map((leg) => leg.foot), ['foot_left', 'foot_right']);
  assert.ok(now.legs.every((leg) => leg.left < 0.01) && now.pelvisShift < -0.01, JSON.stringify(now.legs));
  await run('bone head');
  await page.$eval('#reach-section', (section) => { section.open = true; });
  await page.select('#reach', '1');
  await page.select('#forward', '-z');
  await run();
  await page.$eval('#target-y', (box) => { box.value = 2.5; box.dispatchEvent(new Event('change')); });
  await run();
  const reached = await state();
  assert.deepEqual(reached.forward, [0, 0, -1]);
  assert.equal(reached.target[1], 2.5);
  await page.select('#forward', 'z');
  await page.screenshot({ path: join(work, 'ground.png') });
  await page.click('#plant');
  await run('slope 0', 'reach none', 'bone none');
  assert.equal((await state()).planting, false);
});

test('writes names of bones that lie over no other, and draws the curves of the picked bone', async () => {
  await run('show names on', 'look front', 'bone thigh_left', 'clip walk');
  const boxes = await page.$$eval('#labels span', (spans) => spans.map((span) => {
    const { left, right, top, bottom } = span.getBoundingClientRect();
    return { text: span.textContent, left, right, top: top + 2, bottom: bottom - 2 };
  }));
  assert.ok(boxes.length > 8, `${boxes.length} names`);
  assert.ok(boxes.some((box) => box.text === 'thigh_left'));
  for (const [i, a] of boxes.entries()) {
    for (const b of boxes.slice(i + 1)) {
      assert.ok(a.right <= b.left || b.right <= a.left || a.bottom <= b.top || b.bottom <= a.top, `${a.text} over ${b.text}`);
    }
  }
  assert.equal(await page.$eval('#picked-name', (name) => name.textContent), 'thigh_left');
  assert.equal((await page.$$('#curves-turns path')).length, 7, 'three lines, their keys, and now');
  assert.match(await page.$eval('#curves-text', (text) => text.textContent), /^\d+ keys in \d+ frames/);
  await page.screenshot({ path: join(work, 'names.png') });
  await run('show names off', 'bone none', 'play on');
  assert.equal(await page.$eval('#picked-section', (section) => section.hidden), true);
  assert.equal(await open(sampleFiles()), '', 'the other sample, for what follows');
});

test('scrubs by its slider, steps by keys and blends by its sliders', async () => {
  await run('play off', 'clip sprout_sway', 'seek 0.5');
  assert.equal((await state()).time, 0.5);
  await page.focus('#canvas');
  await page.keyboard.press('ArrowRight');
  await run();
  assert.ok(Math.abs((await state()).frame - 16) < 1e-3, `frame ${(await state()).frame}`);
  await page.$eval('#time', (slider) => { slider.value = 1.25; slider.dispatchEvent(new Event('input')); });
  await run();
  assert.ok(Math.abs((await state()).time - 1.25) < 1e-6);
  const rows = await page.$$('#slots .row');
  await rows[1].$eval('select', (choice) => { choice.value = '2'; choice.dispatchEvent(new Event('change')); });
  await run();
  assert.deepEqual((await state()).slots.map((slot) => slot.animation), [1, 2, -1]);
  await run('blend 1 none');
});

test('picks the bone that is clicked and lets it go again', async () => {
  await run('play off', 'clip sprout_rest', 'look front', 'bone none');
  const box = await (await page.$('#canvas')).boundingBox();
  await page.mouse.click(box.x + box.width / 2, box.y + box.height / 2);
  await run();
  assert.ok((await state()).bone >= 0);
  await run('bone none');
});

test('shows the whole picture in a small window', async () => {
  await page.setViewport({ width: 960, height: 500 });
  await run();
  const [bottom, footer] = await page.evaluate(() => [document.getElementById('canvas').getBoundingClientRect().bottom,
    document.querySelector('footer').getBoundingClientRect().top]);
  assert.ok(bottom <= footer + 1, `the picture ends at ${bottom}, the clock begins at ${footer}`);
  await page.setViewport({ width: 1200, height: 700 });
  await run();
});

test('one finger circles, two come nearer', async () => {
  const box = await (await page.$('#canvas')).boundingBox();
  const x = box.x + box.width / 2;
  const y = box.y + box.height / 2;
  const touches = await page.createCDPSession();
  const send = (type, ...points) => touches.send('Input.dispatchTouchEvent',
    { type, touchPoints: points.map(([dx, dy], id) => ({ x: x + dx, y: y + dy, id })) });
  const before = await state();
  await send('touchStart', [0, 0]);
  await send('touchMove', [60, 0]);
  await send('touchEnd');
  await run();
  const turned = await state();
  assert.ok(Math.abs(turned.azimuth - before.azimuth) > 5, `${before.azimuth} to ${turned.azimuth}`);
  assert.equal(turned.distance, before.distance);
  await send('touchStart', [-20, 0], [20, 0]);
  await send('touchMove', [-60, 0], [60, 0]);
  await send('touchEnd');
  await run();
  const near = await state();
  assert.ok(near.distance < 0.6 * turned.distance, `${turned.distance} to ${near.distance}`);
  await touches.detach();
  await run('frame');
});

test('plays by the mixer, in layers, and lets a bone reach', async () => {
  await page.$eval('#mixer-section', (section) => { section.open = true; });
  await run('clip sprout_sway', 'play on', 'bone 4');
  await page.click('#mixer');
  await slide('#falloff', 2);
  await page.click('#layer-replace');
  await run();
  assert.deepEqual((await state()).layers.map((layer) => [layer.bone, layer.falloff]), [[4, 2]]);
  await page.select('#layers select', '2');
  await run();
  assert.deepEqual((await state()).parts.map((part) => [part.animation, part.layer]), [[1, 0], [2, 1]]);
  await page.screenshot({ path: join(work, 'mixer.png') });
  await page.click('#mixer');
  await run('bone 7');
  await page.$eval('#reach-section', (section) => { section.open = true; });
  await page.select('#reach', '3');
  await run();
  assert.equal((await state()).reachBone, 7);
  await run('reach none', 'bone none');
  assert.equal((await state()).mixing, false);
});

test('draws the pose that tw2 render draws', async () => {
  await run('play off', 'clip sprout_dance', 'seek 0.4', 'look corner', 'show dark off');
  const shown = PNG.sync.read(Buffer.from((await page.$eval('#canvas', (c) => c.toDataURL('image/png'))).split(',')[1], 'base64'));
  const file = join(work, 'rendered.png');
  // The page's own command makes the same picture.
  const words = (await page.evaluate(() => window.tw2.renderCommand())).split(' ').slice(1);
  words[1] = join(sample, 'sprout.script');
  words[words.length - 1] = file;
  execFileSync(tw2, words);
  const rendered = PNG.sync.read(readFileSync(file));
  writeFileSync(join(work, 'shown.png'), PNG.sync.write(shown));
  let different = 0;
  for (let i = 0; i < shown.data.length; i += 4) {
    const worst = Math.max(...[0, 1, 2].map((c) => Math.abs(shown.data[i + c] - rendered.data[i + c])));
    if (worst > 24) different += 1;
  }
  assert.ok(different < shown.width * shown.height * 0.01, `${different} pixels differ of ${shown.width * shown.height}`);
});

test('opens a converted folder, and says why a broken one cannot be opened', async () => {
  assert.equal(await open(sampleFiles()), '');
  assert.match((await object()).script, /^\/load\d+\/sprout\.script$/);
  const damaged = sampleFiles().map(([name, bytes]) => [name, name.endsWith('_skin.tw') ? bytes.subarray(0, 60) : bytes]);
  const said = await open(damaged);
  assert.match(said, /sprout_skin\.tw/);
  await run('seek 0.3');
  assert.equal((await object()).clips.length, 3, 'the old object plays on');
});

test('opens a .glb by its own reader', async (t) => {
  if (!(await page.evaluate(() => window.tw2.canConvert()))) {
    t.skip('the page was built without the converter');
    return;
  }
  const said = await open([['spinner.glb', makeSpinner()]]);
  assert.equal(said, '');
  assert.ok((await object()).clips.some((clip) => clip.name === 'spin'));
  await page.screenshot({ path: join(work, 'glb.png') });
});

test('memory does not grow over many loads', async () => {
  const files = sampleFiles();
  for (let i = 0; i < 5; ++i) await open(files);
  const early = await page.evaluate(() => window.tw2.memory());
  for (let i = 0; i < 200; ++i) assert.equal(await open(files), '');
  const late = await page.evaluate(() => window.tw2.memory());
  assert.ok(late <= early, `${early} bytes after 5 loads, ${late} after 205`);
});

test('complained of nothing and asked nobody', () => {
  assert.deepEqual(complaints, []);
  assert.deepEqual(strangers, []);
});

/** A triangle that turns once in a second, as a binary glTF. */
function makeSpinner() {
  const half = Math.SQRT1_2;
  const floats = [0, 0, 0, 1, 0, 0, 0, 1, 0, /* times */ 0, 0.25, 0.5, /* turns about y */ 0, 0, 0, 1, 0, half, 0, half, 0, 1, 0, 0];
  const data = Buffer.alloc(floats.length * 4);
  floats.forEach((value, i) => data.writeFloatLE(value, i * 4));
  const json = { asset: { version: '2.0' }, scene: 0, scenes: [{ nodes: [0] }], nodes: [{ name: 'plate', mesh: 0 }],
    meshes: [{ primitives: [{ attributes: { POSITION: 0 } }] }], buffers: [{ byteLength: data.length }],
    bufferViews: [{ buffer: 0, byteOffset: 0, byteLength: 36 }, { buffer: 0, byteOffset: 36, byteLength: 12 },
      { buffer: 0, byteOffset: 48, byteLength: 48 }],
    accessors: [{ bufferView: 0, componentType: 5126, count: 3, type: 'VEC3', min: [0, 0, 0], max: [1, 1, 0] },
      { bufferView: 1, componentType: 5126, count: 3, type: 'SCALAR', min: [0], max: [0.5] },
      { bufferView: 2, componentType: 5126, count: 3, type: 'VEC4' }],
    animations: [{ name: 'spin', samplers: [{ input: 1, output: 2 }],
      channels: [{ sampler: 0, target: { node: 0, path: 'rotation' } }] }] };
  let text = JSON.stringify(json);
  text += ' '.repeat((4 - text.length % 4) % 4);
  const head = Buffer.alloc(20);
  head.write('glTF', 0);
  head.writeUInt32LE(2, 4);
  head.writeUInt32LE(28 + text.length + data.length, 8);
  head.writeUInt32LE(text.length, 12);
  head.write('JSON', 16);
  const middle = Buffer.alloc(8);
  middle.writeUInt32LE(data.length, 0);
  middle.write('BIN\0', 4);
  return Buffer.concat([head, Buffer.from(text), middle, data]);
}
