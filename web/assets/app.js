// The browser view's page: the menu's rows in five tabs, the plot of the
// row picked with its console text, the options of the export, and a
// redraw whenever the run's tables change. The state lives in the URL.
'use strict';

const $ = (id) => document.getElementById(id);
const TAB_NAMES = ['1 beam', '2 scans & Twiss', '3 parameter scans', '4 emittances', '5 coupling'];

const state = {
  page: 1, row: 0, run: 0, runs: [], zoom: null, fit: 0, geometry: false, mono: false, bins: 0,
};
let known = { project: '', runs: [] };  // what /api/runs said
let rows = [];                          // what /api/rows said, page by page
let frame = null;                       // the panels of the plot shown
let events = null;                      // the stream of table changes
let drawn = 0;                          // number of the newest request, so older answers are dropped

// --- the URL ----------------------------------------------------------------

function readUrl() {
  const q = new URLSearchParams(location.search);
  const int = (k, d) => (q.has(k) && !Number.isNaN(parseInt(q.get(k), 10)) ? parseInt(q.get(k), 10) : d);
  state.page = Math.min(5, Math.max(1, int('page', 1)));
  state.row = int('row', 0);
  state.run = int('run', 0);
  state.runs = (q.get('runs') || '').split(',').filter((s) => s !== '').map(Number);
  const z = (q.get('zoom') || '').split(':').map(Number);
  state.zoom = z.length === 2 && z.every(Number.isFinite) ? z : null;
  state.fit = int('fit', 0);
  state.geometry = q.get('geometry') === '1';
  state.mono = q.get('mono') === '1';
  state.bins = int('bins', 0);
}

function writeUrl() {
  const q = new URLSearchParams(location.search);
  for (const k of ['page', 'row', 'run', 'runs', 'zoom', 'fit', 'geometry', 'mono', 'bins']) q.delete(k);
  q.set('page', state.page);
  if (state.row) q.set('row', state.row);
  q.set('run', state.run);
  for (const [k, v] of Object.entries(options())) q.set(k, v);
  history.replaceState(null, '', '?' + q.toString());
}

// The export's options of the plot shown, as the server reads them.
function options() {
  const o = {};
  const row = currentRow();
  if (row && row.runs && state.runs.length) o.runs = state.runs.join(',');
  else o.run = state.run;
  if (state.zoom) o.zoom = state.zoom[0] + ':' + state.zoom[1];
  if (state.fit) o.fit = state.fit;
  if (state.geometry) o.geometry = 1;
  if (state.mono) o.mono = 1;
  if (state.bins) o.bins = state.bins;
  return o;
}

function plotUrl(ext, extra = {}) {
  const q = new URLSearchParams({ ...options(), ...extra });
  return `/api/plot/${state.page}:${state.row}.${ext}?${q}`;
}

// --- runs, tabs and rows --------------------------------------------------------

async function getJson(url) {
  const r = await fetch(url);
  if (!r.ok) throw new Error((await r.text()).trim());
  return r.json();
}

async function loadRuns() {
  known = await getJson('/api/runs' + (state.run ? `?run=${state.run}` : ''));
  if (!state.run) state.run = known.served;
  $('project').textContent = known.project;
  document.title = `${known.project} run ${String(state.run).padStart(3, '0')}`;
  const list = known.runs.includes(state.run) ? known.runs : [...known.runs, state.run].sort((a, b) => a - b);
  fill($('run'), list, [state.run]);
  fill($('overlay'), known.runs, state.runs);
  showChanged(known.tables);
}

function fill(select, runs, chosen) {
  select.replaceChildren(...runs.map((n) => {
    const o = new Option(String(n).padStart(3, '0'), n);
    o.selected = chosen.includes(n);
    return o;
  }));
}

async function loadRows() {
  rows = (await getJson(`/api/rows?run=${state.run}`)).pages;
  drawTabs();
  drawRows();
}

function currentRow() {
  const page = rows.find((p) => p.page === state.page);
  return page ? page.rows.find((r) => r.row === state.row) : null;
}

function drawTabs() {
  $('tabs').replaceChildren(...TAB_NAMES.map((name, i) => {
    const b = document.createElement('button');
    b.textContent = name;
    b.className = state.page === i + 1 ? 'on' : '';
    b.addEventListener('click', () => turnPage(i + 1));
    return b;
  }));
}

function drawRows() {
  const page = rows.find((p) => p.page === state.page);
  const items = [];
  for (const r of page ? page.rows : []) {
    if (state.page === 3 && r.row === 31) {
      const h = document.createElement('h2');
      h.textContent = 'run series';
      items.push(h);
    }
    const b = document.createElement('button');
    b.textContent = r.text;
    b.disabled = !r.available;
    b.title = r.available ? `${r.page}:${r.row}` : `needs ${r.needs}`;
    b.className = r.row === state.row ? 'on' : '';
    b.addEventListener('click', () => pick(r.row));
    items.push(b);
  }
  $('rows').replaceChildren(...items);
}

function turnPage(page) {
  state.page = page;
  state.row = 0;
  drawTabs();
  drawRows();
  show();
}

function pick(row) {
  if (row !== state.row) state.zoom = null;
  state.row = row;
  drawRows();
  show();
}

// --- the plot -------------------------------------------------------------------

// The picture as large as the space beside the rows, leaving a few lines of
// the console text in sight, in the screen's own pixels.
function imageSize() {
  const scale = window.devicePixelRatio || 1;
  const width = $('plot').clientWidth;
  const room = window.innerHeight - $('plot').getBoundingClientRect().top - 140;
  const height = Math.max(200, Math.min(0.7 * width, room));
  const clamp = (v) => Math.min(4000, Math.max(200, Math.round(v * scale)));
  return `${clamp(width)}x${clamp(height)}`;
}

// Draws the plot and its text; the picture shown stays until the new one is
// there, so a redraw does not flash.
async function show() {
  writeUrl();
  drawControls();
  const row = currentRow();
  if (!row || !row.available) {
    $('image').className = 'none';
    $('hint').className = '';
    $('hint').textContent = row ? `This run has no ${row.needs}.` : 'Pick a row on the left.';
    $('console').textContent = '';
    frame = null;
    return;
  }
  const mine = ++drawn;
  const url = plotUrl('png', { size: imageSize() });
  try {
    const [png, txt] = await Promise.all([fetch(url), fetch(plotUrl('txt'))]);
    const text = await txt.text();
    if (mine !== drawn) return;
    if (!png.ok) throw new Error((await png.text()).trim());
    frame = JSON.parse(png.headers.get('X-Viewer-Frame') || 'null');
    await png.blob();  // drawn and kept by the server: the image below is its answer again
    const next = new Image();
    next.src = url;
    await next.decode();
    if (mine !== drawn) return;
    $('image').src = url;
    $('image').className = '';
    $('hint').className = 'none';
    $('console').className = '';
    $('console').textContent = text;
  } catch (e) {
    if (mine !== drawn) return;
    $('console').className = 'error';
    $('console').textContent = e.message;
  }
}

function drawControls() {
  const row = currentRow();
  $('zoom-low').value = state.zoom ? state.zoom[0] : '';
  $('zoom-high').value = state.zoom ? state.zoom[1] : '';
  $('fit').value = String(state.fit);
  $('geometry').checked = state.geometry;
  $('mono').checked = state.mono;
  $('bins').value = state.bins || '';
  $('overlay').disabled = !(row && row.runs);
  const links = row && row.available ? ['png', 'pdf', 'ps', 'csv', 'json'] : [];
  $('downloads').replaceChildren($('downloads').firstElementChild, ...links.map((ext) => {
    const a = document.createElement('a');
    a.href = plotUrl(ext, ext === 'png' ? { size: imageSize() } : {});
    a.download = `${known.project}-${state.page}-${state.row}.${ext}`;
    a.textContent = ext.toUpperCase();
    return a;
  }));
}

// --- the pointer on the plot ------------------------------------------------------

// The panel under an image pixel and the world coordinates there.
function world(ev) {
  if (!frame) return null;
  const img = $('image');
  const px = (ev.offsetX * img.naturalWidth) / img.clientWidth;
  const py = (ev.offsetY * img.naturalHeight) / img.clientHeight;
  for (const p of frame.panels) {
    const [left, right, top, bottom] = p.viewport;
    if (px < left || px > right || py < top || py > bottom) continue;
    const [x1, x2, y1, y2] = p.window;
    return { x: x1 + ((px - left) / (right - left)) * (x2 - x1), y: y1 + ((bottom - py) / (bottom - top)) * (y2 - y1) };
  }
  return null;
}

let drag = null;

function pointerEvents() {
  const img = $('image');
  const fmt = (v) => (Math.abs(v) >= 1e4 || (Math.abs(v) < 1e-3 && v !== 0) ? v.toExponential(4) : v.toPrecision(5));
  img.addEventListener('mousemove', (ev) => {
    const w = world(ev);
    const abscissa = state.page === 2 && state.row <= 4 ? 'phase' : state.page === 4 && state.row >= 15 ? 't' : state.page === 3 ? 'x' : 'z';
    $('where').textContent = w ? `${abscissa} = ${fmt(w.x)}   y = ${fmt(w.y)}` : '';
    if (drag) {
      const a = Math.min(drag.offset, ev.offsetX), b = Math.max(drag.offset, ev.offsetX);
      Object.assign($('band').style, { display: 'block', left: `${a}px`, width: `${b - a}px`, height: `${img.clientHeight}px` });
    }
  });
  img.addEventListener('mouseleave', () => { $('where').textContent = ''; });
  img.addEventListener('mousedown', (ev) => {
    const w = world(ev);
    if (w) drag = { offset: ev.offsetX, x: w.x };
    ev.preventDefault();
  });
  window.addEventListener('mouseup', (ev) => {
    if (!drag) return;
    const start = drag;
    drag = null;
    $('band').style.display = 'none';
    const w = ev.target === img ? world(ev) : null;
    if (!w || Math.abs(ev.offsetX - start.offset) < 4) return;
    state.zoom = [Math.min(start.x, w.x), Math.max(start.x, w.x)].map((v) => Number(v.toPrecision(6)));
    show();
  });
  img.addEventListener('dblclick', () => { state.zoom = null; show(); });
}

// --- runs and the tables' changes --------------------------------------------------

async function toRun(run) {
  state.run = run;
  await loadRuns();
  await loadRows();
  watch();
  show();
}

function step(by) {
  const i = known.runs.indexOf(state.run);
  const next = known.runs[i < 0 ? 0 : Math.min(known.runs.length - 1, Math.max(0, i + by))];
  if (next !== undefined && next !== state.run) toRun(next);
}

function showChanged(tables) {
  const newest = Math.max(0, ...tables.map((t) => t.modified));
  $('changed').textContent = newest ? `tables last changed ${new Date(newest * 1000).toLocaleString()}` : 'no tables yet';
}

function watch() {
  if (events) events.close();
  events = new EventSource(`/api/events?run=${state.run}`);
  events.addEventListener('change', async (ev) => {
    const data = JSON.parse(ev.data);
    showChanged(data.tables);
    const before = JSON.stringify(rows);
    await loadRows();  // tables that appear offer their rows
    if (currentRow() && (currentRow().available || JSON.stringify(rows) !== before)) show();
  });
}

// --- controls and keys ----------------------------------------------------------------

function controls() {
  $('controls').addEventListener('submit', (ev) => {
    ev.preventDefault();
    const lo = parseFloat($('zoom-low').value), hi = parseFloat($('zoom-high').value);
    state.zoom = Number.isFinite(lo) && Number.isFinite(hi) ? [Math.min(lo, hi), Math.max(lo, hi)] : null;
    show();
  });
  $('zoom-reset').addEventListener('click', () => { state.zoom = null; show(); });
  $('fit').addEventListener('change', () => { state.fit = parseInt($('fit').value, 10); show(); });
  $('geometry').addEventListener('change', () => { state.geometry = $('geometry').checked; show(); });
  $('mono').addEventListener('change', () => { state.mono = $('mono').checked; show(); });
  $('bins').addEventListener('change', () => {
    const n = parseInt($('bins').value, 10);
    state.bins = n >= 1 && n <= 3200 ? n : 0;
    show();
  });
  $('run').addEventListener('change', () => toRun(parseInt($('run').value, 10)));
  $('overlay').addEventListener('change', () => {
    state.runs = [...$('overlay').selectedOptions].map((o) => parseInt(o.value, 10));
    show();
  });
  $('prev').addEventListener('click', () => step(-1));
  $('next').addEventListener('click', () => step(1));
  document.addEventListener('keydown', (ev) => {
    if (ev.target.matches('input, select')) return;
    if (ev.key === 'ArrowLeft') step(-1);
    else if (ev.key === 'ArrowRight') step(1);
    else if (ev.key >= '1' && ev.key <= '5') turnPage(parseInt(ev.key, 10));
  });
  let resized = null;
  window.addEventListener('resize', () => { clearTimeout(resized); resized = setTimeout(show, 300); });
}

async function start() {
  readUrl();
  controls();
  pointerEvents();
  try {
    await loadRuns();
    await loadRows();
  } catch (e) {
    $('console').className = 'error';
    $('console').textContent = e.message;
    return;
  }
  watch();
  show();
}

start();
