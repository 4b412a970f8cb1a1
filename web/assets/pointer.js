// The pointer on a picture the server drew: the world coordinates under it
// on a plot, a drag across the plot to zoom and a double click to undo it,
// and the run under a click on the study's scatter. A frame is what the
// server sends beside a PNG (X-Viewer-Frame): each panel's viewport in the
// image's pixels, counted from its upper left corner, and its world window.
'use strict';

// The image pixel under a mouse event on `img`, whatever size it is shown at.
const imagePixel = (ev, img) => ({
  px: (ev.offsetX * img.naturalWidth) / img.clientWidth,
  py: (ev.offsetY * img.naturalHeight) / img.clientHeight,
});

// The panel under an image pixel of the plot and the world coordinates there.
function world(ev) {
  if (!frame) return null;
  const { px, py } = imagePixel(ev, $('image'));
  for (const p of frame.panels) {
    const [left, right, top, bottom] = p.viewport;
    if (px < left || px > right || py < top || py > bottom) continue;
    const [x1, x2, y1, y2] = p.window;
    return { x: x1 + ((px - left) / (right - left)) * (x2 - x1), y: y1 + ((bottom - py) / (bottom - top)) * (y2 - y1) };
  }
  return null;
}

// Where the world point (x, y) of a panel lies in the image's pixels.
function pixelOf(panel, x, y) {
  const [left, right, top, bottom] = panel.viewport;
  const [x1, x2, y1, y2] = panel.window;
  return { px: left + ((x - x1) / (x2 - x1)) * (right - left), py: bottom - ((y - y1) / (y2 - y1)) * (bottom - top) };
}

// Of `dots` ({x, y} in the world of the frame's first panel, with anything
// else), the one nearest a mouse event on `img`, if it lies within `reach`
// pixels of the screen.
function nearestDot(ev, img, frameOf, dots, reach = 12) {
  if (!frameOf || !frameOf.panels.length || !img.naturalWidth) return null;
  const { px, py } = imagePixel(ev, img);
  const scale = img.clientWidth / img.naturalWidth;
  let best = null, bestDistance = reach;
  for (const d of dots) {
    const at = pixelOf(frameOf.panels[0], d.x, d.y);
    const distance = Math.hypot(at.px - px, at.py - py) * scale;
    if (distance <= bestDistance) [best, bestDistance] = [d, distance];
  }
  return best;
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
