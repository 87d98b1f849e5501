// How the page reads dropped files: zip archives, names, and what it says of broken ones. Needs no browser.
//   node --test files_test.mjs
import { File } from 'node:buffer';
import { readFileSync } from 'node:fs';
import { deflateRawSync } from 'node:zlib';
import test from 'node:test';
import assert from 'node:assert/strict';

// By its text: older versions of node do not take a file of that name for a module.
const source = readFileSync(new URL('../../web/page/files.js', import.meta.url)).toString('base64');
const { readDropped, readPicked, unzip, writeFiles } = await import(`data:text/javascript;base64,${source}`);

const text = (bytes) => new TextDecoder().decode(bytes);
const asText = (files) => files.map(({ name, bytes }) => [name, text(bytes)]);

/** A zip archive as tools write them: local headers, a directory, its end, and a comment behind that. */
function zip(entries) {
  const parts = [];
  const directory = [];
  let at = 0;
  for (const { name, content, method = 8, extra = 0 } of entries) {
    const packed = method === 8 ? deflateRawSync(Buffer.from(content)) : Buffer.from(content);
    const local = Buffer.alloc(30 + name.length + extra);
    local.writeUInt32LE(0x04034b50, 0);
    local.writeUInt16LE(method, 8);
    local.writeUInt32LE(packed.length, 18);
    local.writeUInt16LE(name.length, 26);
    local.writeUInt16LE(extra, 28);
    local.write(name, 30);
    const listed = Buffer.alloc(46 + name.length);
    listed.writeUInt32LE(0x02014b50, 0);
    listed.writeUInt16LE(method, 10);
    listed.writeUInt32LE(packed.length, 20);
    listed.writeUInt16LE(name.length, 28);
    listed.writeUInt32LE(at, 42);
    listed.write(name, 46);
    parts.push(local, packed);
    directory.push(listed);
    at += local.length + packed.length;
  }
  const list = Buffer.concat(directory);
  const end = Buffer.alloc(22 + 7);
  end.writeUInt32LE(0x06054b50, 0);
  end.writeUInt16LE(entries.length, 10);
  end.writeUInt32LE(list.length, 12);
  end.writeUInt32LE(at, 16);
  end.writeUInt16LE(7, 20);
  end.write('comment', 22);
  return new Uint8Array(Buffer.concat([...parts, list, end]));
}

const walk = [{ name: 'walk/', content: '', method: 0 },
  { name: 'walk/walk.script', content: 'skeleton', method: 0, extra: 9 },
  { name: 'walk/skin.tw', content: 'skin '.repeat(1000) }];

test('a zip gives its files, stored and deflated ones, by their names', async () => {
  assert.deepEqual(asText(await unzip({ name: 'walk.zip', bytes: zip(walk) })),
    [['walk/walk.script', 'skeleton'], ['walk/skin.tw', 'skin '.repeat(1000)]]);
  // Part of a larger buffer, as browsers hand them out.
  const bytes = zip(walk);
  const larger = new Uint8Array(bytes.length + 10);
  larger.set(bytes, 10);
  assert.equal((await unzip({ name: 'walk.zip', bytes: larger.subarray(10) })).length, 2);
});

test('a zip that cannot be read says what is wrong with it', async () => {
  const whole = zip(walk);
  const change = (at, value) => Object.assign(whole.slice(), { [at]: value });
  const directory = new DataView(whole.buffer).getUint32(whole.length - 29 + 16, true);
  const damaged = whole.slice();
  damaged.fill(0xFF, directory - 20, directory);
  for (const [bytes, said] of [[whole.subarray(0, 50), 'it has no directory'],
    [new Uint8Array(0), 'it has no directory'],
    [change(directory, 0), `bad directory at byte ${directory}`],
    [change(whole.length - 29 + 18, 0x70), 'bad directory at byte'],
    [change(directory + 46 + 5 + 10, 14), 'walk/walk.script is packed by method 14'],
    [change(directory + 46 + 5 + 22, 0x70), 'walk/walk.script is cut off'],
    [change(directory + 46 + 5 + 44, 0x70), 'walk/walk.script lies outside the file'],
    [damaged, 'walk/skin.tw is damaged']]) {
    await assert.rejects(unzip({ name: 'walk.zip', bytes }),
      (error) => error.message.startsWith('walk.zip: not a readable zip file: ') && error.message.includes(said), said);
  }
});

/** What a browser says of a dropped file or folder; a folder tells its content in batches. */
const file = (name, content) => ({ isFile: true, name, file: (done) => done(new File([content], name)) });
const folder = (name, ...batches) => ({ isFile: false, name,
  createReader: () => ({ readEntries: (done) => done(batches.shift() ?? []) }) });

test('what is dropped keeps its place in its folders', async () => {
  const items = [folder('out', [file('a.script', 'a'), folder('textures', [file('b.png', 'b')])], [file('c.tw', 'c')]),
    file('d.ZIP', zip(walk)), null].map((entry) => ({ webkitGetAsEntry: () => entry }));
  assert.deepEqual(asText(await readDropped({ items })).map(([name]) => name),
    ['out/a.script', 'out/textures/b.png', 'out/c.tw', 'walk/walk.script', 'walk/skin.tw']);
});

test('what is chosen keeps its place in the chosen folder', async () => {
  const chosen = [Object.assign(new File(['a'], 'a.gltf')), Object.assign(new File(['b'], 'b.bin'))];
  Object.defineProperty(chosen[1], 'webkitRelativePath', { value: 'model/b.bin' });
  assert.deepEqual(asText(await readPicked(chosen)), [['a.gltf', 'a'], ['model/b.bin', 'b']]);
});

test('files are written below their folder, whatever their names say', async () => {
  const written = new Map();
  const folders = new Set();
  const FS = { mkdirTree: (name) => folders.add(name), writeFile: (name, bytes) => written.set(name, bytes) };
  const names = await writeFiles(FS, '/load1', ['a.glb', 'textures\\b.png', '../../etc/c', '/d', './e/./f'].map((name) => (
    { name, bytes: new Uint8Array([1]) })));
  assert.deepEqual(names, ['/load1/a.glb', '/load1/textures/b.png', '/load1/etc/c', '/load1/d', '/load1/e/f']);
  assert.deepEqual([...written.keys()], names);
  assert.deepEqual([...folders], ['/load1', '/load1/textures', '/load1/etc', '/load1/e']);
});
