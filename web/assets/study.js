// The study page: every run under the served folder with its figures, sorted
// by any column and filtered by folder or project, the scatter of two
// figures with their front, and a click on a run (its row or its dot) to
// show its pages. The server watches the folder tree and says when the
// study changed: runs appear while an optimiser writes them. What the page
// shows is kept in the URL, as the run's pages are.
'use strict';

const study = {
  runs: [], figures: [], sort: 'name', down: false, filter: '', x: 'NX_EMIT', y: 'E_MEAN',
  front: '',          // "A,B[,C]" as the export's --front; empty: that of x and y
  ticked: new Set(),  // names of the runs laid over the one shown
  frame: null,        // the scatter's frame as drawn
  dots: [],           // the runs of the scatter as drawn, with their place in its world
  drawn: 0,           // number of the newest scatter asked for
  changed: false,     // the study changed since the scatter was drawn
  loaded: false,
};
let studyEvents = null;

const figureLabel = (f) => (f.unit ? `${f.name} [${f.unit}]` : f.name);
const runName = (r) => `${r.folder}/${r.project},${r.run}`;  // ids move when runs appear; names stay

// --- the URL -----------------------------------------------------------------------

const STUDY_KEYS = ['sort', 'desc', 'filter', 'x', 'y', 'front', 'over', 'of'];

function readStudyUrl(q) {
  study.sort = q.get('sort') || 'name';
  study.down = q.get('desc') === '1';
  study.filter = q.get('filter') || '';
  study.x = q.get('x') || 'NX_EMIT';
  study.y = q.get('y') || 'E_MEAN';
  study.front = q.get('front') || '';
  study.ticked = new Set(q.getAll('over'));
  state.studyName = q.get('of') || '';  // its id comes with the study (loadStudy)
  state.study = null;
  $('study-filter').value = study.filter;
  $('study-front').value = study.front;
}

// What differs from the page as it first opens.
function writeStudyUrl(q) {
  for (const k of STUDY_KEYS) q.delete(k);
  const put = (k, v, plain) => { if (v !== plain) q.set(k, v); };
  put('sort', study.sort, 'name');
  put('desc', study.down ? '1' : '', '');
  put('filter', study.filter, '');
  put('x', study.x, 'NX_EMIT');
  put('y', study.y, 'E_MEAN');
  put('front', study.front, '');
  for (const name of study.ticked) q.append('over', name);
  if (state.study !== null) q.set('of', state.studyName);
}

// --- the table ------------------------------------------------------------------------

// The columns: a title and how a run is read for it.
function studyColumns() {
  const fixed = [['name', (r) => r.name], ['folder', (r) => r.folder], ['project', (r) => r.project],
    ['run', (r) => r.run], ['state', (r) => r.state], ['records', (r) => r.records]];
  return [...fixed, ...study.figures.map((f) => [figureLabel(f), (r) => r.figures[figureLabel(f)]])];
}

async function loadStudy() {
  const got = await getJson('/api/study');
  Object.assign(study, { figures: got.figures, runs: got.runs, loaded: true });
  // The run shown keeps its place though others appear before it.
  if (state.studyName) {
    const r = study.runs.find((s) => runName(s) === state.studyName);
    state.study = r ? r.id : null;
    if (!r) state.studyName = '';
  }
  state.studies = study.runs.filter((r) => study.ticked.has(runName(r)) && r.id !== state.study).map((r) => r.id);
}

function sortedRuns() {
  const read = (studyColumns().find(([t]) => t === study.sort) || studyColumns()[0])[1];
  const words = study.filter.toLowerCase().split(/\s+/).filter((w) => w);
  const shown = study.runs.filter((r) => words.every((w) => `${r.folder}/${r.project}`.toLowerCase().includes(w)));
  const order = (a, b) => {
    const x = read(a), y = read(b);
    if (x === null || y === null) return (x === null) - (y === null);  // runs lacking it go last
    const c = typeof x === 'number' ? x - y : String(x).localeCompare(String(y), undefined, { numeric: true });
    return study.down ? -c : c;
  };
  return shown.sort(order);
}

function drawStudy() {
  const fmt = (v) => (v === null || v === undefined ? '' : typeof v === 'number' && !Number.isInteger(v) ? v.toPrecision(5) : String(v));
  const columns = studyColumns();
  const head = make('tr', {}, make('th', { title: 'lay over the run shown' }, 'over'), ...columns.map(([title]) => make('th', {
    textContent: title + (title === study.sort ? (study.down ? ' \u25bc' : ' \u25b2') : ''),
    className: title === study.sort ? 'on' : '',
    onclick: () => { study.down = study.sort === title && !study.down; study.sort = title; writeUrl(); drawStudy(); },
  })));
  const line = (r) => {
    const tick = make('input', {
      type: 'checkbox', checked: study.ticked.has(runName(r)), title: 'lay over the run shown',
      onclick: (ev) => ev.stopPropagation(),
      onchange: async (ev) => {
        study.ticked[ev.target.checked ? 'add' : 'delete'](runName(r));
        await loadStudy();
        writeUrl();
      },
    });
    return make('tr', { className: `${r.state}${r.id === state.study ? ' on' : ''}`, onclick: () => openStudyRun(r) },
      make('td', {}, tick), ...columns.map(([, read]) => make('td', {}, fmt(read(r)))));
  };
  const runs = sortedRuns();
  $('study-table').replaceChildren(make('thead', {}, head), make('tbody', {}, ...runs.map(line)));
  $('study-count').textContent = `${runs.length} of ${study.runs.length} runs`;
  const options = (chosen) => study.figures.map((f) => make('option', { value: f.name, textContent: figureLabel(f), selected: f.name === chosen }));
  $('study-x').replaceChildren(...options(study.x));
  $('study-y').replaceChildren(...options(study.y));
}

// --- the scatter -----------------------------------------------------------------------

// The runs that have both figures, at their place in the scatter's world.
function dotsOf(runs) {
  const label = (name) => figureLabel(study.figures.find((f) => f.name === name) || { name });
  const [x, y] = [label(study.x), label(study.y)];
  return runs.filter((r) => r.figures[x] != null && r.figures[y] != null)
    .map((r) => ({ run: r, x: r.figures[x], y: r.figures[y] }));
}

// The scatter, asked for again when its figures or the study changed; the
// picture shown stays until the new one is there.
async function showStudy() {
  if (!study.loaded) {  // a single project's page turned to the study
    await loadStudy();
    watchStudy();
  }
  drawStudy();
  const q = new URLSearchParams({ x: study.x, y: study.y, front: study.front || `${study.x},${study.y}`, size: '640x480' });
  if (q.toString() === study.scatterKey && !study.changed) return;
  study.scatterKey = q.toString();
  study.changed = false;
  const mine = ++study.drawn;
  const url = `/api/study/scatter.png?${q}&t=${mine}`;
  const runs = study.runs;
  try {
    const png = await fetch(url);
    if (!png.ok) throw new Error((await png.text()).trim());
    const frame = JSON.parse(png.headers.get('X-Viewer-Frame') || 'null');
    await png.blob();  // drawn and kept by the server: the image below is its answer again
    const next = new Image();
    next.src = url;
    await next.decode();
    if (mine !== study.drawn) return;
    Object.assign(study, { frame, dots: dotsOf(runs) });
    $('study-scatter').src = url;
    $('study-error').textContent = '';
  } catch (e) {
    if (mine === study.drawn) $('study-error').textContent = e.message;
  }
}

// --- runs of the study ----------------------------------------------------------------

// A run of the study in the five pages, the ticked runs over it on rows
// along z; the back button returns to the study.
async function openStudyRun(r) {
  writeUrl();
  Object.assign(state, { study: r.id, studyName: runName(r), row: 0, page: 1, zoom: null, file: '' });
  study.ticked.delete(runName(r));
  await loadStudy();
  await load();
  watch();
  turnPage(1, true);
}

async function refreshStudy() {
  await loadStudy();
  study.changed = true;
  if (state.page === STUDY) showStudy();
}

// The server's word that the study changed; kept while the page is open.
function watchStudy() {
  if (studyEvents) return;
  studyEvents = new EventSource('/api/study/events');
  studyEvents.addEventListener('change', () => refreshStudy().catch(() => {}));
}

function studyControls() {
  $('study-filter').addEventListener('input', () => { study.filter = $('study-filter').value; writeUrl(); drawStudy(); });
  $('study-front').addEventListener('change', () => { study.front = $('study-front').value.replace(/\s+/g, ''); show(); });
  for (const axis of ['x', 'y'])
    $(`study-${axis}`).addEventListener('change', () => { study[axis] = $(`study-${axis}`).value; show(); });
  const scatter = $('study-scatter');
  scatter.addEventListener('click', (ev) => {
    const hit = nearestDot(ev, scatter, study.frame, study.dots);
    if (hit) openStudyRun(hit.run);
  });
  scatter.addEventListener('mousemove', (ev) => {
    const hit = nearestDot(ev, scatter, study.frame, study.dots);
    scatter.style.cursor = hit ? 'pointer' : 'default';
    scatter.title = hit ? runName(hit.run).replace(/^\.\//, '') : '';
  });
}
