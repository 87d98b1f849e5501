// Files that a user drops or chooses, as { name, bytes } with names relative to what was dropped.

/** Reads everything that was dropped, folders included. */
export async function readDropped(transfer) {
  const entries = [...transfer.items].map((item) => item.webkitGetAsEntry?.()).filter(Boolean);
  const files = [];
  for (const entry of entries) await readEntry(entry, '', files);
  return unpackAll(files);
}

/** Reads what a file dialog gave. */
export async function readPicked(list) {
  const files = await Promise.all([...list].map(async (file) => ({
    name: file.webkitRelativePath || file.name, bytes: new Uint8Array(await file.arrayBuffer()) })));
  return unpackAll(files);
}

async function readEntry(entry, folder, files) {
  if (entry.isFile) {
    const file = await new Promise((done, fail) => entry.file(done, fail));
    files.push({ name: folder + file.name, bytes: new Uint8Array(await file.arrayBuffer()) });
    return;
  }
  const reader = entry.createReader();
  for (;;) {
    const batch = await new Promise((done, fail) => reader.readEntries(done, fail));
    if (!batch.length) return;
    for (const inner of batch) await readEntry(inner, `${folder}${entry.name}/`, files);
  }
}

async function unpackAll(files) {
  const all = [];
  for (const file of files) {
    if (file.name.toLowerCase().endsWith('.zip')) all.push(...await unzip(file));
    else all.push(file);
  }
  return all;
}

/** The files of a zip archive, stored or deflated (PKWARE's APPNOTE 6.3.3, sections 4.3.7 to 4.3.16). */
export async function unzip({ name, bytes }) {
  const view = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
  const broken = (reason) => new Error(`${name}: not a readable zip file: ${reason}`);
  let end = bytes.length - 22;
  while (end >= 0 && view.getUint32(end, true) !== 0x06054b50) end -= 1;
  if (end < 0) throw broken('it has no directory');
  const files = [];
  let at = view.getUint32(end + 16, true);
  for (let count = view.getUint16(end + 10, true); count > 0; count -= 1) {
    if (at + 46 > bytes.length || view.getUint32(at, true) !== 0x02014b50) throw broken(`bad directory at byte ${at}`);
    const method = view.getUint16(at + 10, true);
    const packedSize = view.getUint32(at + 20, true);
    const nameLength = view.getUint16(at + 28, true);
    const inner = new TextDecoder().decode(bytes.subarray(at + 46, at + 46 + nameLength));
    const local = view.getUint32(at + 42, true);
    at += 46 + nameLength + view.getUint16(at + 30, true) + view.getUint16(at + 32, true);
    if (inner.endsWith('/')) continue;
    if (local + 30 > bytes.length) throw broken(`${inner} lies outside the file`);
    const begin = local + 30 + view.getUint16(local + 26, true) + view.getUint16(local + 28, true);
    if (begin + packedSize > bytes.length) throw broken(`${inner} is cut off`);
    const packed = bytes.subarray(begin, begin + packedSize);
    if (method === 0) files.push({ name: inner, bytes: packed });
    else if (method === 8) files.push({ name: inner, bytes: await inflate(packed, () => broken(`${inner} is damaged`)) });
    else throw broken(`${inner} is packed by method ${method}; stored and deflated ones can be read`);
  }
  return files;
}

async function inflate(packed, makeError) {
  try {
    const stream = new Blob([packed]).stream().pipeThrough(new DecompressionStream('deflate-raw'));
    return new Uint8Array(await new Response(stream).arrayBuffer());
  } catch {
    throw makeError();
  }
}

/** Writes files below a new folder of the viewer's file system; returns their full names. */
export async function writeFiles(FS, folder, files) {
  const names = [];
  for (const file of files) {
    // Names of archives may climb out of their folder: only the parts that do not are used.
    const parts = file.name.split(/[\\/]/).filter((part) => part && part !== '.' && part !== '..');
    FS.mkdirTree([folder, ...parts.slice(0, -1)].join('/'));
    const name = [folder, ...parts].join('/');
    FS.writeFile(name, file.bytes);
    names.push(name);
  }
  return names;
}
