// The browser view's page: the menu's rows in five tabs and the run's
// particle files in a sixth, the plot of the row or file picked with its
// console text, the options of the export, and a redraw whenever the run's
// files change. The state lives in the URL: a reload, the back button or a
// link sent to someone shows the same.
'use strict';

const $ = (id) => document.getElementById(id);
// An element with its properties (handlers too: onclick) and children.
const make = (tag, props = {}, ...kids) => {
  const e = Object.assign(document.createElement(tag), props);
  e.append(...kids);
  return e;
};
const TAB_NAMES = ['1 beam', '2 scans & Twiss', '3 parameter scans', '4 emittances', '5 coupling', 'particles', 'study'];
const PARTICLES = 6;  // the tab of the particle files
const STUDY = 7;      // the runs of every folder and project (study.js)
const COORDS = ['x', 'y', 'z', 'xp', 'yp', 'px', 'py', 'pz', 'E', 'dE', 't'];

const state = {
  page: 1, row: 0, run: 0, runs: [], zoom: null, fit: 0, geometry: false, mono: false, bins: 0,
  file: '', view: 'plane', plane: ['x', 'xp'], lost: false,
  study: null, studyName: '', studies: [],  // a run of the study by its id, and the runs laid over it
};
let known = { project: '', runs: [] };  // what /api/runs said
let rows = [];                          // what /api/rows said, page by page
let files = [];                         // what /api/particles said
let frame = null;                       // the panels of the plot shown
let events = null;                      // the stream of table changes
let drawn = 0;                          // number of the newest request, so older answers are dropped

// --- the URL ----------------------------------------------------------------

function readUrl() {
  const q = new URLSearchParams(location.search);
  const int = (k, d) => (q.has(k) && !Number.isNaN(parseInt(q.get(k), 10)) ? parseInt(q.get(k), 10) : d);
  state.page = Math.min(STUDY, Math.max(1, int('page', 1)));
  state.row = int('row', 0);
  state.run = int('run', 0);
  state.runs = (q.get('runs') || '').split(',').filter((s) => s !== '').map(Number);
  const z = (q.get('zoom') || '').split(':').map(Number);
  state.zoom = z.length === 2 && z.every(Number.isFinite) ? z : null;
  state.fit = int('fit', 0);
  state.geometry = q.get('geometry') === '1';
  state.mono = q.get('mono') === '1';
  state.bins = int('bins', 0);
  state.file = q.get('file') || '';
  state.view = q.has('sheet') ? 'sheet' : q.has('slices') ? `slices-${q.get('along') === 'z' ? 'z' : 't'}` : 'plane';
  const plane = (q.get('plane') || '').split(':');
  state.plane = plane.length === 2 && plane.every((c) => COORDS.includes(c)) ? plane : ['x', 'xp'];
  state.lost = q.get('lost') === '1';
  readStudyUrl(q);
}

// Writes the state into the URL; `anew`: as a new step of the history, which
// the back button leaves.
function writeUrl(anew = false) {
  const q = new URLSearchParams(location.search);
  for (const k of 'page row run runs zoom fit geometry mono bins file plane slices along sheet lost study studies'.split(' ')) q.delete(k);
  q.set('page', state.page);
  if (state.row) q.set('row', state.row);
  if (state.file) q.set('file', state.file);
  q.set('run', state.run);
  // A run of the study goes by its name (writeStudyUrl): ids move as runs appear.
  for (const [k, v] of Object.entries(options())) if (k !== 'study' && k !== 'studies') q.set(k, v);
  writeStudyUrl(q);
  const url = '?' + q.toString();
  if (url !== location.search) history[anew ? 'pushState' : 'replaceState'](null, '', url);
}

// The export's options of the plot or particle view shown, as the server
// reads them; a particle view is one plane, the slices or the sheet.
function options() {
  const o = {};
  const row = currentRow();
  if (state.study !== null) {
    if (row && row.runs && state.studies.length) o.studies = [state.study, ...state.studies].join(',');
    else o.study = state.study;
  } else if (state.page !== PARTICLES && row && row.runs && state.runs.length) o.runs = state.runs.join(',');
  else o.run = state.run;
  if (state.page === PARTICLES) {
    if (state.view === 'sheet') o.sheet = 1;
    else if (state.view.startsWith('slices')) Object.assign(o, { slices: 20, along: state.view.slice(-1) });
    else o.plane = state.plane.join(':');
    if (state.lost) o.lost = 1;
  } else {
    if (state.zoom) o.zoom = state.zoom[0] + ':' + state.zoom[1];
    if (state.fit) o.fit = state.fit;
    if (state.geometry) o.geometry = 1;
  }
  if (state.mono) o.mono = 1;
  if (state.bins) o.bins = state.bins;
  return o;
}

function plotUrl(ext, extra = {}) {
  const q = new URLSearchParams({ ...options(), ...extra });
  const what = state.page === PARTICLES ? `particles/${currentFile().id}` : `plot/${state.page}:${state.row}`;
  return `/api/${what}.${ext}?${q}`;
}

const currentFile = () => files.find((f) => f.name === state.file) || null;

// --- runs, tabs and rows --------------------------------------------------------

async function getJson(url) {
  const r = await fetch(url);
  if (!r.ok) throw new Error((await r.text()).trim());
  return r.json();
}

// The header and the window's title: the run shown, or the study on its tab.
function nameHeader() {
  const onStudy = state.page === STUDY;
  $('project').textContent = onStudy ? 'study' : state.study !== null ? state.studyName.replace(/^\.\//, '') : known.project;
  document.title = onStudy ? 'study' : `${known.project} run ${String(state.run).padStart(3, '0')}`;
}

// The run asked about: one of the served project, or of the study.
const runParam = () => (state.study !== null ? `study=${state.study}` : `run=${state.run}`);

async function loadRuns() {
  const study = known.study;
  known = await getJson('/api/runs' + (state.study !== null ? `?${runParam()}` : state.run ? `?run=${state.run}` : ''));
  known.study = known.study || study;
  document.body.classList.toggle('study-run', state.study !== null);
  if (!state.run) state.run = known.served;
  $('project').textContent = state.study !== null ? state.studyName.replace(/^\.\//, '') : known.project;
  document.title = `${known.project} run ${String(state.run).padStart(3, '0')}`;
  const list = known.runs.includes(state.run) ? known.runs : [...known.runs, state.run].sort((a, b) => a - b);
  fill($('run'), list, [state.run]);
  fill($('overlay'), known.runs, state.runs);
  showChanged(known.tables);
}

function fill(select, runs, chosen) {
  select.replaceChildren(...runs.map((n) => make('option', {
    textContent: String(n).padStart(3, '0'), value: n, selected: chosen.includes(n),
  })));
}

async function loadRows() {
  rows = (await getJson(`/api/rows?${runParam()}`)).pages;
  drawTabs();
  drawRows();
}

async function loadFiles() {
  files = (await getJson(`/api/particles?${runParam()}`)).files;
  if (state.page === PARTICLES) drawRows();
}

function currentRow() {
  const page = rows.find((p) => p.page === state.page);
  return page ? page.rows.find((r) => r.row === state.row) : null;
}

function drawTabs() {
  $('tabs').replaceChildren(...TAB_NAMES.map((name, i) => make('button', {
    textContent: name, className: state.page === i + 1 ? 'on' : '', onclick: () => turnPage(i + 1),
  })));
}

function drawRows() {
  if (state.page === STUDY) return drawStudy();
  if (state.page === PARTICLES) return drawFiles();
  const page = rows.find((p) => p.page === state.page);
  const items = [];
  for (const r of page ? page.rows : []) {
    if (state.page === 3 && r.row === 31) items.push(make('h2', { textContent: 'run series' }));
    items.push(make('button', {
      textContent: r.text, disabled: !r.available, title: r.available ? `${r.page}:${r.row}` : `needs ${r.needs}`,
      className: r.row === state.row ? 'on' : '', onclick: () => pick(r.row),
    }));
  }
  $('rows').replaceChildren(...items);
}

// The particle files as a table: a name to pick, z and the counts.
function drawFiles() {
  const line = (f) => {
    const choose = () => { state.file = f.name; drawRows(); show(); };
    const cells = f.error ? [make('td', { colSpan: 3, className: 'error' }, 'cannot be read')]
      : [f.z.toFixed(4), f.particles, f.active].map((v) => make('td', {}, String(v)));
    return make('tr', { className: f.name === state.file ? 'on' : '' },
      make('td', {}, make('button', { textContent: f.name, title: f.error || `id ${f.id}`, onclick: choose })), ...cells);
  };
  const head = make('tr', {}, ...['file', 'z [m]', 'particles', 'active'].map((h) => make('th', {}, h)));
  $('rows').replaceChildren(files.length ? make('table', { id: 'files' }, make('thead', {}, head),
    make('tbody', {}, ...files.map(line))) : make('p', { className: 'empty' }, 'This run has no particle files yet.'));
}

function turnPage(page, anew = false) {
  state.page = page;
  state.row = 0;
  drawTabs();
  drawRows();
  show(anew);
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

// Why the tab shown has nothing to draw; empty when it has.
function missing() {
  if (state.page === PARTICLES) {
    const f = currentFile();
    return !f ? 'Pick a particle file on the left.' : f.error || '';  // the error names the file
  }
  const row = currentRow();
  return !row ? 'Pick a row on the left.' : row.available ? '' : `This run has no ${row.needs}.`;
}

// Draws the plot and its text; the picture shown stays until the new one is
// there, so a redraw does not flash.
async function show(anew = false) {
  writeUrl(anew);
  document.body.classList.toggle('particle-tab', state.page === PARTICLES);
  document.body.classList.toggle('study-tab', state.page === STUDY);
  nameHeader();
  if (state.page === STUDY) return showStudy();
  drawControls();
  const mine = ++drawn;  // an answer still on its way is not wanted
  if (missing()) {
    $('image').className = 'none';
    $('hint').className = '';
    $('hint').textContent = missing();
    $('console').textContent = '';
    frame = null;
    return;
  }
  const url = plotUrl('png', { size: imageSize() });
  try {
    const [png, txt] = await Promise.all([fetch(url), fetch(plotUrl('txt'))]);
    const text = await txt.text();
    if (mine !== drawn) return;
    if (!png.ok) throw new Error((await png.text()).trim());
    // The pointer reads the plots along z; a particle view has no such panels.
    frame = state.page === PARTICLES ? null : JSON.parse(png.headers.get('X-Viewer-Frame') || 'null');
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
  $('bins').placeholder = state.page === PARTICLES ? '100' : '10';  // the export's own
  $('overlay').disabled = !(row && row.runs) || state.page === PARTICLES;
  $('particle-view').value = state.view;
  [$('plane-a').value, $('plane-b').value] = state.plane;
  $('plane-a').disabled = $('plane-b').disabled = state.view !== 'plane';
  $('lost').checked = state.lost;
  const name = state.page === PARTICLES ? `${state.file}-${state.view === 'plane' ? state.plane.join('-') : state.view}`
    : `${known.project}-${state.page}-${state.row}`;
  const links = missing() ? [] : ['png', 'pdf', 'ps', 'csv', 'json'];
  $('downloads').replaceChildren($('downloads').firstElementChild, ...links.map((ext) => make('a', {
    href: plotUrl(ext, ext === 'png' ? { size: imageSize() } : {}), download: `${name}.${ext}`, textContent: ext.toUpperCase(),
  })));
}

// --- runs and the tables' changes --------------------------------------------------

async function load() {
  await loadRuns();
  await loadRows();
  await loadFiles();
}

async function toRun(run) {
  state.run = run;
  await load();
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
  events = new EventSource(`/api/events?${runParam()}`);
  events.addEventListener('change', async (ev) => {
    const data = JSON.parse(ev.data);
    showChanged(data.tables);
    const before = JSON.stringify(rows), file = JSON.stringify(currentFile());
    await loadRows();  // tables that appear offer their rows
    await loadFiles();
    if (state.page === PARTICLES) {
      if (JSON.stringify(currentFile()) !== file) show();  // the file picked was written anew
    } else if (currentRow() && (currentRow().available || JSON.stringify(rows) !== before)) show();
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
  for (const id of ['plane-a', 'plane-b']) $(id).replaceChildren(...COORDS.map((c) => new Option(c, c)));
  const particleView = () => {
    Object.assign(state, { view: $('particle-view').value, plane: [$('plane-a').value, $('plane-b').value], lost: $('lost').checked });
    show();
  };
  for (const id of ['particle-view', 'plane-a', 'plane-b', 'lost']) $(id).addEventListener('change', particleView);
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
    else if (ev.key >= '1' && ev.key <= String(PARTICLES)) turnPage(parseInt(ev.key, 10));
  });
  let resized = null;
  window.addEventListener('resize', () => { clearTimeout(resized); resized = setTimeout(show, 300); });
}

// Shows what the URL says: at the start, and on the back and forward buttons.
async function restore() {
  readUrl();
  try {
    if (state.studyName || state.page === STUDY) await loadStudy();  // the run's id from its name
    await load();
    if (known.study && !new URLSearchParams(location.search).has('page')) state.page = STUDY;
    if (known.study || state.page === STUDY) await loadStudy();
    drawTabs();
  } catch (e) {
    $('console').className = 'error';
    $('console').textContent = e.message;
    return;
  }
  watch();
  if (known.study || state.page === STUDY) watchStudy();
  show();
}

function start() {
  controls();
  studyControls();
  pointerEvents();
  window.addEventListener('popstate', restore);
  restore();
}

document.addEventListener('DOMContentLoaded', start);  // once the other scripts are read too
