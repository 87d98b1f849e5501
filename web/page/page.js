// The page around the viewer: controls turn into the viewer's commands, its state into what the controls show.
import { readDropped, readPicked, writeFiles } from './files.js';

const $ = (id) => document.getElementById(id);
const canvas = $('canvas');
let core;       // the WebAssembly module
let object = {};  // what is looked at: changes when something is loaded
let state = {};   // what is shown now
let last = 0;
let loads = 0;

const call = (name, types = [], values = [], result = 'string') => core.ccall(name, result, types, values);

/** Carries out a command; what it complains of is shown and stays until something succeeds. */
function execute(line) {
  const reason = call('tw2_execute', ['string'], [line]);
  showError(reason);
  return !reason;
}

function showError(reason) {
  $('message').textContent = reason;
  $('message').hidden = !reason;
}

function showNote(text) {
  $('note').textContent = text;
  $('note').hidden = !text;
  clearTimeout(showNote.timer);
  if (text) showNote.timer = setTimeout(() => { $('note').hidden = true; }, 6000);
}

const quote = (word) => `"${word}"`;

// ---- controls made from what is loaded

function option(value, text) {
  const element = document.createElement('option');
  element.value = value;
  element.textContent = text;
  return element;
}

function listItem(list, text, action) {
  const item = document.createElement('li');
  item.role = 'option';
  item.id = `${list.id}-${list.children.length}`;
  item.textContent = text;
  item.onclick = action;
  list.append(item);
  return item;
}

/** Up, down, Home and End move through a list as its arrow keys should. */
function makeListKeyboard(list) {
  list.addEventListener('keydown', (event) => {
    const items = [...list.children].filter((item) => !item.hidden);
    const now = items.findIndex((item) => item.getAttribute('aria-selected') === 'true');
    const next = { ArrowDown: now + 1, ArrowUp: now - 1, Home: 0, End: items.length - 1 }[event.key];
    if (next === undefined || !items.length) return;
    event.preventDefault();
    event.stopPropagation();
    const item = items[Math.min(Math.max(next, 0), items.length - 1)];
    item.click();
    item.scrollIntoView({ block: 'nearest' });
  });
}

function describeObject() {
  object = JSON.parse(call('tw2_object'));
  $('object').replaceChildren(...(object.choices ?? []).map((name) => option(name, name)));
  $('object').value = object.choice ?? '';
  $('level-row').hidden = (object.levels ?? 1) < 2;
  $('level').max = (object.levels ?? 1) - 1;

  // What such an object does not have.
  $('flag-file-lights').parentElement.hidden = !object.lights;
  $('flag-visibility').parentElement.hidden = object.skinned !== false;

  $('clips').replaceChildren();
  for (const clip of object.clips ?? []) {
    const item = listItem($('clips'), clip.name, () => execute(`clip ${clip.index}`));
    item.title = `${clip.frames} frames at ${clip.rate} per second, repeats after ${clip.period.toFixed(3)} s`;
    item.dataset.index = clip.index;
  }
  $('textures').replaceChildren(...(object.textures ?? []).map((set) => {
    const button = document.createElement('button');
    button.type = 'button';
    button.textContent = `texture ${set} on or off`;
    button.onclick = () => execute(`texture ${quote(set)}`);
    return button;
  }));

  $('blend-section').hidden = (object.clips ?? []).length < 2;
  $('slots').replaceChildren(...[0, 1, 2].map(makeSlot));
  $('group').replaceChildren(option(-1, '(the same)'), ...(object.clips ?? []).map((c) => option(c.index, c.name)));

  const depths = [];
  $('bones').replaceChildren();
  (object.bones ?? []).forEach((bone, index) => {
    depths[index] = bone.parent < 0 ? 0 : depths[bone.parent] + 1;
    const item = listItem($('bones'), bone.name || '(without a name)',
      () => execute(state.bone === index ? 'bone none' : `bone ${index}`));
    item.style.paddingInlineStart = `${0.4 + 0.6 * depths[index]}rem`;
  });
  $('bone-count').textContent = `(${(object.bones ?? []).length})`;
  $('materials').replaceChildren(...(object.materials ?? []).map((material) => {
    const item = document.createElement('li');
    item.textContent = material.name;
    item.append(Object.assign(document.createElement('small'), { textContent: material.setUp }));
    return item;
  }));
  $('material-count').textContent = `(${(object.materials ?? []).length})`;
}

function makeSlot(slot) {
  const row = document.createElement('div');
  row.className = 'row';
  const select = document.createElement('select');
  select.ariaLabel = `Animation of slot ${slot}`;
  if (slot > 0) select.append(option(-1, '(none)'));
  select.append(...(object.clips ?? []).map((clip) => option(clip.index, clip.name)));
  select.onchange = () => execute(`blend ${slot} ${select.value === '-1' ? 'none' : select.value}`);
  const weight = Object.assign(document.createElement('input'), { type: 'range', min: 0, max: 1, step: 0.01 });
  weight.ariaLabel = `Weight of slot ${slot}`;
  weight.oninput = () => {
    if (select.value !== '-1') execute(`blend ${slot} ${select.value} ${weight.value}`);
  };
  row.append(select, weight);
  return row;
}

const flags = [['mesh', 'mesh'], ['skeleton', 'skeleton'], ['names', 'bone names'], ['axes', 'bone axes'],
  ['bounds', 'bounding volumes'], ['grid', 'grid'], ['shadow', 'shadow'], ['studio-lights', 'studio lights'],
  ['file-lights', 'the file’s lights'], ['visibility', 'visibility tracks'], ['dark', 'dark']];

function makeFlags() {
  for (const [name, text] of flags) {
    const label = document.createElement('label');
    const box = Object.assign(document.createElement('input'), { type: 'checkbox', id: `flag-${name}` });
    box.onchange = () => execute(`show ${name} ${box.checked ? 'on' : 'off'}`);
    label.append(box, text);
    $('flags').append(label);
  }
}

// ---- what the controls show

/** Changes a control only when it is not in the user's hand. */
function setValue(element, value) {
  if (document.activeElement !== element || element.tagName === 'SELECT') {
    if (element.type === 'checkbox') element.checked = value;
    else if (element.value !== String(value)) element.value = value;
  }
}

function select(list, index) {
  [...list.children].forEach((item, i) => {
    const chosen = String(i === index);
    if (item.getAttribute('aria-selected') !== chosen) item.setAttribute('aria-selected', chosen);
  });
  // A screen reader follows the list by this: its rows cannot have the focus.
  const now = list.children[index]?.id ?? '';
  if ((list.getAttribute('aria-activedescendant') ?? '') !== now) list.setAttribute('aria-activedescendant', now);
}

function showState() {
  state = JSON.parse(call('tw2_state'));
  const settings = Object.fromEntries(state.settings.map((line) => [line.slice(0, line.lastIndexOf(' ')),
    line.slice(line.lastIndexOf(' ') + 1)]));
  for (const [name] of flags) setValue($(`flag-${name}`), settings[`show ${name}`] === 'on');
  setValue($('surface'), settings.surface);
  setValue($('wireframe'), settings.wireframe);
  setValue($('loop'), settings.loop === 'on');
  setValue($('speed'), Number(settings.speed));
  $('speed-text').textContent = Number(settings.speed).toFixed(2);
  $('time').max = Math.max(state.period, 0.001);
  $('time').value = state.time;
  // Told when it is asked for; while it plays, every picture would be news.
  if (!state.playing || document.activeElement !== $('time')) $('time').ariaValueText = `${state.time.toFixed(2)} seconds`;
  $('play').textContent = state.playing ? 'Pause' : 'Play';
  const clip = (object.clips ?? []).findIndex((c) => c.index === state.slots[0].animation);
  $('frame-text').textContent = `${state.time.toFixed(3)} s, frame ${state.frame.toFixed(1)}`;
  select($('clips'), clip);
  [...$('slots').children].forEach((row, i) => {
    setValue(row.children[0], state.slots[i].animation);
    setValue(row.children[1], state.slots[i].weight);
  });
  setValue($('crossmode'), state.crossMode);
  $('fade').hidden = $('frozen-row').hidden = state.frozen <= 0;
  setValue($('frozen'), state.frozen);
  setValue($('level'), state.level);
  $('level-text').textContent = state.level < 0 ? 'by distance' : state.level;
  select($('bones'), state.bone);
  const bone = state.bone >= 0 ? state.bone : state.groupBone;
  $('group-row').hidden = bone < 0;
  $('group-text').textContent = bone < 0 ? 'Pick a bone: it and all below it can play something else.'
    : `${object.bones[bone].name} and all below it`;
  setValue($('group'), state.groupBone === bone && bone >= 0 ? state.groupAnimation : -1);
  setValue($('crowd'), state.crowd);
  showMixer();
  showGround();
  showCurves();
  showCosts();
}

const clipName = (index) => (object.clips ?? []).find((clip) => clip.index === index)?.name ?? '(none)';
const boneName = (index) => (index < 0 ? 'all bones' : `${object.bones[index].name} and below`);

function showMixer() {
  setValue($('mixer'), state.mixing);
  $('mixer-controls').hidden = !state.mixing;
  $('group-section').hidden = state.mixing;
  $('blend-section').hidden = state.mixing || (object.clips ?? []).length < 2;
  setValue($('mix-fade'), state.fade);
  $('mix-fade-text').textContent = `${state.fade.toFixed(2)} s`;
  setValue($('in-step'), state.inStep);
  setValue($('travel'), state.travelling);
  if ($('layers').children.length !== state.layers.length) $('layers').replaceChildren(...state.layers.map(makeLayer));
  state.layers.forEach((layer, i) => {
    const playing = state.parts.filter((part) => part.layer === i + 1).at(-1)?.animation ?? -1;
    setValue($('layers').children[i].querySelector('select'), playing);
    setValue($('layers').children[i].querySelector('input'), layer.weight);
  });
  $('parts').replaceChildren(...pairs(state.parts.map((part) =>
    [clipName(part.animation), `${Math.round(part.weight * 100)} %${part.layer ? `, layer ${part.layer}` : ''}`])));
  $('events').replaceChildren(...state.events.map((event) => Object.assign(document.createElement('li'),
    { textContent: `${event.seconds.toFixed(2)} s ${event.name} (${event.animation})` })));
  const bone = state.reachBone >= 0 ? state.reachBone : state.bone;
  $('reach-row').hidden = bone < 0;
  $('target-row').hidden = state.reachKind === 0;
  $('reach-text').textContent = bone < 0 ? 'Pick a bone: it can look at a point or reach for it.' : object.bones[bone].name;
  setValue($('reach'), state.reachKind);
  $('place-row').hidden = state.reachKind === 0;
  $('forward-row').hidden = state.reachKind !== 1;
  setValue($('forward'), axisName(state.forward));
  ['x', 'y', 'z'].forEach((axis, i) => setValue($(`target-${axis}`), Number(state.target[i].toFixed(3))));
  $('mask-text').textContent = `A new layer for ${state.bone < 0 ? 'all bones (pick one for it and below)' : boneName(state.bone)}:`;
  $('falloff-row').hidden = state.bone < 0;
}

/** One of the six axes, as the command says it. */
function axisName(forward) {
  const place = forward.findIndex((value) => Math.abs(value) > 0.5);
  return place < 0 ? 'z' : `${forward[place] < 0 ? '-' : ''}${'xyz'[place]}`;
}

function showGround() {
  setValue($('plant'), state.planting);
  setValue($('slope'), state.slope);
  $('slope-text').textContent = `${state.slope.toFixed(0)}°`;
  setValue($('towards'), state.towards);
  $('towards-text').textContent = `${state.towards.toFixed(0)}°`;
  $('plant-controls').hidden = !state.planting;
  setValue($('plant-weight'), state.plantWeight);
  $('leg').hidden = state.bone < 0;
  $('legs').replaceChildren(...pairs([...state.legs.map((leg) => [`${leg.thigh} to ${leg.foot}`, `off by ${leg.left.toFixed(3)}`]),
    [state.pelvis, `moved by ${state.pelvisShift.toFixed(3)}`]]));
}

// ---- curves of the picked bone

let curves = { about: '' };

/** Lines of three values side by side, with a dot at each key. */
function drawCurves(svg, values, keys, unit) {
  const all = values.flat();
  const lowest = Math.min(...all);
  const range = Math.max(Math.max(...all) - lowest, 1e-6);
  const last = Math.max(values[0].length - 1, 1);
  const place = (frame, value) => `${(100 * frame / last).toFixed(2)} ${(38 - 36 * (value - lowest) / range).toFixed(2)}`;
  const path = (kind, d) => {
    const element = document.createElementNS('http://www.w3.org/2000/svg', 'path');
    element.setAttribute('class', kind);
    element.setAttribute('d', d);
    return element;
  };
  svg.replaceChildren(...values.flatMap((line, i) => [path('xyz'[i], `M${line.map((value, frame) => place(frame, value)).join('L')}`),
    path(`keys ${'xyz'[i]}`, keys.filter((key) => key in line).map((key) => `M${place(key, line[key])}h0`).join(''))]),
  path('now', 'M0 0v40'));
  svg.setAttribute('aria-label', `${unit}, from ${lowest.toFixed(3)} to ${(lowest + range).toFixed(3)}: x red, y green, z blue`);
}

function showCurves() {
  $('picked-section').hidden = state.bone < 0;
  if (state.bone < 0 || !$('picked-section').open) return;
  const animation = state.slots[0].animation;
  const about = `${loads} ${object.script} ${state.bone} ${animation}`;
  if (curves.about !== about) {
    curves = { about, ...JSON.parse(call('tw2_curves')) };
    const moved = curves.values?.[0].length > 0;
    const frames = curves.values?.[0].length ?? 0;
    $('picked-name').textContent = object.bones[state.bone].name;
    $('curves-text').textContent = moved ? `${curves.keys.length} keys in ${frames} frames: moves, and turns in degrees (x red, y green, z blue)`
      : `${clipName(animation)} does not move it.`;
    for (const [name, first, unit] of [['moves', 0, 'moves in units'], ['turns', 3, 'turns in degrees']]) {
      $(`curves-${name}`).toggleAttribute('hidden', !moved);
      if (moved) drawCurves($(`curves-${name}`), curves.values.slice(first, first + 3), curves.keys, unit);
    }
  }
  const last = Math.max((curves.values?.[0].length ?? 2) - 1, 1);
  for (const line of document.querySelectorAll('.curves .now')) line.setAttribute('d', `M${100 * Math.min(state.frame / last, 1)} 0v40`);
}

function makeLayer(layer, place) {
  const row = document.createElement('div');
  row.className = 'row';
  const text = Object.assign(document.createElement('span'),
    { textContent: `layer ${place + 1}${layer.additive ? ', added' : ''}: ${boneName(layer.bone)}${
      layer.falloff ? `, over ${layer.falloff} bones` : ''}` });
  const select = document.createElement('select');
  select.ariaLabel = `Animation of layer ${place + 1}`;
  select.append(option(-1, '(none)'), ...(object.clips ?? []).map((clip) => option(clip.index, clip.name)));
  select.onchange = () => execute(select.value === '-1' ? `unmix ${place + 1}` : `mix ${select.value} ${place + 1}`);
  const weight = Object.assign(document.createElement('input'), { type: 'range', min: 0, max: 1, step: 0.01 });
  weight.ariaLabel = `Weight of layer ${place + 1}`;
  weight.oninput = () => execute(`layer-weight ${place + 1} ${weight.value}`);
  row.append(text, select, weight);
  return row;
}

/** Terms and what they say, for a list of descriptions. */
const pairs = (rows) => rows.flatMap(([name, value]) => [Object.assign(document.createElement('dt'), { textContent: name }),
  Object.assign(document.createElement('dd'), { textContent: value })]);

function showCosts() {
  const rows = { playing: `${state.poseNanoseconds.toFixed(0)} ns per bone`,
    scene: `${state.frameNanoseconds.toFixed(0)} ns per bone`, together: `${state.milliseconds.toFixed(3)} ms`,
    drawing: `${state.drawMilliseconds.toFixed(2)} ms` };
  $('costs').replaceChildren(...pairs(Object.entries(rows)));
}

function showLabels() {
  const on = $('flag-names').checked;
  $('labels').classList.toggle('dark', $('flag-dark').checked);
  if (!on) {
    if ($('labels').firstChild) $('labels').replaceChildren();
    return;
  }
  const lines = call('tw2_labels', ['number', 'number'], [canvas.clientWidth, canvas.clientHeight]).trim();
  const labels = (lines ? lines.split('\n') : []).map((line) => line.split(' ').map(Number));
  // The picked one first: names that would lie over others are left out.
  labels.sort((a, b) => (b[2] === state.bone) - (a[2] === state.bone));
  const written = [];
  for (const [x, y, index] of labels) {
    const box = { left: x, right: x + widthOf(object.bones[index].name), top: y - 7, bottom: y + 7 };
    if (!written.some((other) => box.left < other.right && other.left < box.right && box.top < other.bottom && other.top < box.bottom)) {
      written.push({ ...box, index, x, y });
    }
  }
  $('labels').replaceChildren(...written.map(({ x, y, index }) => {
    const span = document.createElement('span');
    span.textContent = object.bones[index].name;
    span.classList.toggle('picked', index === state.bone);
    span.style.left = `${x}px`;
    span.style.top = `${y}px`;
    return span;
  }));
}

/** Pixels that a bone's name takes in the picture, with what stands between two of them. */
function widthOf(name) {
  const { widths } = widthOf;
  if (!widths.has(name)) {
    const pen = document.createElement('canvas').getContext('2d');
    pen.font = getComputedStyle($('labels')).font;
    widths.set(name, pen.measureText(name).width + 8);
  }
  return widths.get(name);
}
widthOf.widths = new Map();

// ---- every picture

function frame(now) {
  const seconds = Math.min((now - last) / 1000, 0.25);
  last = now;
  const scale = window.devicePixelRatio || 1;
  const width = Math.max(1, Math.round(canvas.clientWidth * scale));
  const height = Math.max(1, Math.round(canvas.clientHeight * scale));
  if (canvas.width !== width || canvas.height !== height) {
    canvas.width = width;
    canvas.height = height;
  }
  const reason = call('tw2_frame', ['number', 'number', 'number'], [seconds, width, height]);
  if (reason) showError(reason);
  showState();
  showLabels();
  requestAnimationFrame(frame);
}

// ---- mouse, touch, keyboard

function makeCanvasInput() {
  const pointers = new Map();
  let moved = 0;
  canvas.onpointerdown = (event) => {
    canvas.setPointerCapture(event.pointerId);
    pointers.set(event.pointerId, { x: event.clientX, y: event.clientY });
    moved = 0;
  };
  canvas.onpointermove = (event) => {
    const before = pointers.get(event.pointerId);
    if (!before) return;
    const height = Math.max(canvas.clientHeight, 1);
    const dx = event.clientX - before.x;
    const dy = event.clientY - before.y;
    moved += Math.abs(dx) + Math.abs(dy);
    if (pointers.size === 2) {
      const other = [...pointers].find(([id]) => id !== event.pointerId)[1];
      const distance = (p) => Math.hypot(p.x - other.x, p.y - other.y);
      execute(`zoom ${distance(before) / Math.max(distance({ x: event.clientX, y: event.clientY }), 1)}`);
      execute(`pan ${-dx / height / 2} ${dy / height / 2}`);
    } else if (event.ctrlKey && state.reachKind > 0) {
      execute(`move-target ${dx / height} ${-dy / height}`);
    } else if (event.shiftKey || event.buttons & 6) {
      execute(`pan ${-dx / height} ${dy / height}`);
    } else {
      execute(`orbit ${-dx / height * 250} ${dy / height * 250}`);
    }
    pointers.set(event.pointerId, { x: event.clientX, y: event.clientY });
  };
  const end = (event) => {
    if (pointers.delete(event.pointerId) && moved < 4 && event.type === 'pointerup' && event.button === 0) {
      const box = canvas.getBoundingClientRect();
      call('tw2_pick', ['number', 'number'], [2 * (event.clientX - box.left) / box.width - 1,
        1 - 2 * (event.clientY - box.top) / box.height], null);
    }
  };
  canvas.onpointerup = end;
  canvas.onpointercancel = end;
  canvas.oncontextmenu = (event) => event.preventDefault();
  canvas.addEventListener('wheel', (event) => {
    event.preventDefault();
    execute(`zoom ${Math.exp(Math.max(-1, Math.min(1, event.deltaY / 400)))}`);
  }, { passive: false });
}

function onKey(event) {
  const typing = event.target.closest('input, select, textarea, [role=listbox]');
  const pressing = event.key === ' ' && event.target.closest('button, summary');
  if (typing || pressing || event.ctrlKey || event.metaKey || event.altKey || $('help').open) return;
  const name = { ' ': 'Space', ArrowLeft: 'Left', ArrowRight: 'Right' }[event.key]
    ?? (event.key.length === 1 ? event.key.toUpperCase() : event.key);
  const done = call('tw2_key', ['string'], [name], 'number');
  if (done === 2) showError(call('tw2_answer'));
  if (done) event.preventDefault();
}

// ---- opening

/** Opens what was dropped or chosen: a list of { name, bytes } with names relative to one folder. */
async function open(files) {
  if (!files.length) return;
  const folder = `/load${++loads}`;
  try {
    const names = await writeFiles(core.FS, folder, files);
    const script = names.filter((name) => name.toLowerCase().endsWith('.script')).sort()[0];
    const model = names.find((name) => /\.(glb|gltf)$/i.test(name));
    let answer;
    if (script) {
      answer = call('tw2_open', ['string'], [script]);
      answer = answer && `!${answer}`;
    } else if (model) {
      showNote(`${model.split('/').pop()}: converting`);
      await new Promise((done) => setTimeout(done, 20));
      answer = call('tw2_convert', ['string', 'string'], [model, `${folder}/converted`]);
    } else {
      answer = `!${files[0].name}: neither a .glb or .gltf model nor a folder or zip with a .script file`;
    }
    if (answer.startsWith('!')) {
      showError(answer.slice(1));
      removeFolder(folder);
      return;
    }
    showError('');
    showNote(answer.trim());
    if (open.folder) removeFolder(open.folder);
    open.folder = folder;
    describeObject();
  } catch (error) {
    showError(error.message);
    removeFolder(folder);
  }
}

function removeFolder(folder) {
  if (!core.FS.analyzePath(folder).exists) return;
  for (const name of core.FS.readdir(folder)) {
    if (name === '.' || name === '..') continue;
    const path = `${folder}/${name}`;
    if (core.FS.isDir(core.FS.stat(path).mode)) removeFolder(path);
    else core.FS.unlink(path);
  }
  core.FS.rmdir(folder);
}

function makeOpening() {
  $('open').onclick = () => $('files').click();
  $('open-folder').onclick = () => $('folder').click();
  for (const id of ['files', 'folder']) {
    $(id).onchange = async () => {
      await open(await readPicked($(id).files));
      $(id).value = '';
    };
  }
  let depth = 0;
  window.ondragenter = (event) => { event.preventDefault(); depth += 1; $('drop').hidden = false; };
  window.ondragleave = () => { depth -= 1; $('drop').hidden = depth > 0; };
  window.ondragover = (event) => event.preventDefault();
  window.ondrop = async (event) => {
    event.preventDefault();
    depth = 0;
    $('drop').hidden = true;
    await open(await readDropped(event.dataTransfer));
  };
}

function makeControls() {
  makeFlags();
  makeListKeyboard($('clips'));
  makeListKeyboard($('bones'));
  document.querySelectorAll('[data-line]').forEach((button) => { button.onclick = () => execute(button.dataset.line); });
  $('object').onchange = () => { if (execute(`object ${quote($('object').value)}`)) describeObject(); };
  $('level').oninput = () => execute(`level ${$('level').value < 0 ? 'auto' : $('level').value}`);
  $('crossmode').onchange = () => execute(`crossmode ${$('crossmode').selectedOptions[0].textContent}`);
  $('frozen').oninput = () => execute(`frozen ${$('frozen').value}`);
  $('group').onchange = () => {
    const bone = state.bone >= 0 ? state.bone : state.groupBone;
    execute($('group').value === '-1' ? 'ungroup' : `group ${bone} ${$('group').value}`);
  };
  for (const name of ['mixer', 'in-step', 'travel']) $(name).onchange = () => execute(`${name} ${$(name).checked ? 'on' : 'off'}`);
  $('mix-fade').oninput = () => execute(`mix-fade ${$('mix-fade').value}`);
  $('falloff').oninput = () => { $('falloff-text').textContent = `${$('falloff').value} bones`; };
  const mask = () => (state.bone >= 0 ? ` ${state.bone} ${$('falloff').value}` : '');
  $('layer-replace').onclick = () => execute(`add-layer replace${mask()}`);
  $('layer-add').onclick = () => execute(`add-layer additive${mask()}`);
  $('reach').onchange = () => {
    const kind = $('reach').selectedOptions[0].textContent;
    execute(`reach ${kind}${kind === 'none' ? '' : ` ${state.reachBone >= 0 ? state.reachBone : state.bone}`}`);
  };
  $('forward').onchange = () => execute(`forward ${$('forward').value}`);
  for (const axis of ['x', 'y', 'z']) {
    $(`target-${axis}`).onchange = () => execute(`target ${['x', 'y', 'z'].map((each) => $(`target-${each}`).value || 0).join(' ')}`);
  }
  $('plant').onchange = () => execute(`plant ${$('plant').checked ? 'on' : 'off'}`);
  $('slope').oninput = () => execute(`slope ${$('slope').value}`);
  $('towards').oninput = () => execute(`slope ${$('slope').value} ${$('towards').value}`);
  $('plant-weight').oninput = () => execute(`plant-weight ${$('plant-weight').value}`);
  $('leg').onclick = () => execute(`leg ${state.bone}`);
  $('surface').onchange = () => execute(`surface ${$('surface').value}`);
  $('wireframe').onchange = () => execute(`wireframe ${$('wireframe').value}`);
  $('look').onchange = () => { if ($('look').value) execute(`look ${$('look').value}`); $('look').value = ''; };
  $('bone-filter').oninput = () => {
    const part = $('bone-filter').value.toLowerCase();
    for (const item of $('bones').children) item.hidden = !item.textContent.toLowerCase().includes(part);
  };
  $('crowd').onchange = () => execute(`crowd ${$('crowd').value || 0}`);
  $('time').oninput = () => { execute('play off'); execute(`seek ${$('time').value}`); };
  $('loop').onchange = () => execute(`loop ${$('loop').checked ? 'on' : 'off'}`);
  $('speed').oninput = () => execute(`speed ${$('speed').value}`);
  $('picture').onclick = () => canvas.toBlob((blob) => {
    const link = Object.assign(document.createElement('a'), { href: URL.createObjectURL(blob), download: 'picture.png' });
    link.click();
    setTimeout(() => URL.revokeObjectURL(link.href), 1000);
  });
  $('copy-command').onclick = async () => {
    const [command, missing] = call('tw2_render_command', ['number', 'number'], [canvas.width, canvas.height]).split('\n');
    try {
      await navigator.clipboard.writeText(command);
      showNote(`In the clipboard: ${command}`);
    } catch {
      showNote(command);  // a browser may keep its clipboard to itself
    }
    if (missing) $('note').textContent += `\nIt draws all but ${missing}.`;
  };
  $('help-button').onclick = () => $('help').showModal();
  $('panels-button').onclick = () => {
    const plain = document.body.classList.toggle('plain');
    $('panels-button').setAttribute('aria-pressed', String(!plain));
  };
  window.addEventListener('keydown', onKey);
  const rows = [['drag', 'circle around the object'], ['Shift, right drag, two fingers', 'move sideways'],
    ['wheel, pinch', 'come nearer, go away'], ['click', 'pick a bone'],
    ...JSON.parse(call('tw2_commands')).filter((c) => c.key).map((c) => [c.key, c.help])];
  $('keys').replaceChildren(...pairs(rows));
}

// ---- begin

async function begin() {
  core = await createViewer();
  const reason = call('tw2_start', ['string'], ['#canvas']);
  if (reason) {
    showError(reason);
    return;
  }
  if (matchMedia('(prefers-color-scheme: dark)').matches) execute('show dark on');
  for (const line of readSettings()) execute(line);
  makeControls();
  makeCanvasInput();
  makeOpening();
  showError(call('tw2_open', ['string'], ['/sample/walker.script']));
  describeObject();
  window.addEventListener('pagehide', () => localStorage.setItem('tw2-view', JSON.stringify(state.settings ?? [])));
  // What a test drives the page with.
  window.tw2 = { execute, open,
    renderCommand: () => call('tw2_render_command', ['number', 'number'], [canvas.width, canvas.height]).split('\n')[0], state: () => state, object: () => object, memory: () => core.HEAPU8.length,
    canConvert: () => call('tw2_can_convert', [], [], 'number') === 1 };
  last = performance.now();
  requestAnimationFrame(frame);
}

function readSettings() {
  try {
    const lines = JSON.parse(localStorage.getItem('tw2-view') ?? '[]');
    return Array.isArray(lines) ? lines.filter((line) => typeof line === 'string') : [];
  } catch {
    return [];  // of another version, or storage is not allowed: begin as on the first day
  }
}

begin().catch((error) => showError(`The viewer could not be started: ${error.message}`));
