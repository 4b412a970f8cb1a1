// The study page: every run under the served folder with its figures, sorted
// by any column and filtered by folder or project, the scatter of two
// figures with their front, and a click on a run to show its pages. The
// table is asked for again every few seconds (the server keeps the figures,
// so this is cheap): runs appear while an optimiser writes them.
'use strict';

const study = {
  runs: [], figures: [], sort: 'name', down: false, filter: '', x: 'NX_EMIT', y: 'E_MEAN',
  ticked: new Set(),  // names of the runs laid over the one shown
  seen: '',           // the table as last drawn
};

const figureLabel = (f) => (f.unit ? `${f.name} [${f.unit}]` : f.name);
const runName = (r) => `${r.folder}/${r.project},${r.run}`;  // ids move when runs appear; names stay

// The columns: a title and how a run is read for it.
function studyColumns() {
  const fixed = [['name', (r) => r.name], ['folder', (r) => r.folder], ['project', (r) => r.project],
    ['run', (r) => r.run], ['state', (r) => r.state], ['records', (r) => r.records]];
  return [...fixed, ...study.figures.map((f) => [figureLabel(f), (r) => r.figures[figureLabel(f)]])];
}

async function loadStudy() {
  const got = await getJson('/api/study');
  study.figures = got.figures;
  study.runs = got.runs;
  // The run shown keeps its place though others appear before it.
  if (state.study !== null) {
    const r = study.runs.find((s) => runName(s) === state.studyName);
    state.study = r ? r.id : null;
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
    onclick: () => { study.down = study.sort === title && !study.down; study.sort = title; drawStudy(); },
  })));
  const line = (r) => {
    const tick = make('input', {
      type: 'checkbox', checked: study.ticked.has(runName(r)), title: 'lay over the run shown',
      onclick: (ev) => ev.stopPropagation(),
      onchange: (ev) => { study.ticked[ev.target.checked ? 'add' : 'delete'](runName(r)); loadStudy(); },
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

function showStudy() {
  drawStudy();
  const key = `${study.x}:${study.y}`;
  if (key === study.scatterKey && !study.changed) return;
  study.scatterKey = key;
  study.changed = false;
  const q = new URLSearchParams({ x: study.x, y: study.y, front: `${study.x},${study.y}`, size: '640x480', t: Date.now() });
  $('study-scatter').src = `/api/study/scatter.png?${q}`;
}

// A run of the study in the five pages, the ticked runs over it on rows along z.
async function openStudyRun(r) {
  Object.assign(state, { study: r.id, studyName: runName(r), row: 0, page: 1, zoom: null });
  study.ticked.delete(runName(r));
  await loadStudy();
  await load();
  watch();
  turnPage(1);
}

async function refreshStudy() {
  if (!known.study && state.page !== STUDY && state.study === null) return;
  const before = JSON.stringify(study.runs);
  await loadStudy();
  const now = JSON.stringify(study.runs);
  if (now === before) return;
  study.changed = true;
  if (state.page === STUDY) return showStudy();
  if (state.study !== null) {
    await loadRows();  // tables that appear offer their rows
    show();
  }
}

function studyControls() {
  $('study-filter').addEventListener('input', () => { study.filter = $('study-filter').value; drawStudy(); });
  for (const axis of ['x', 'y'])
    $(`study-${axis}`).addEventListener('change', () => { study[axis] = $(`study-${axis}`).value; showStudy(); });
  setInterval(() => refreshStudy().catch(() => {}), 3000);
}
