// Draws what a transmission put on air: its marks (carrier on) and spaces on a time axis, as an
// inline SVG with a zoom, and the same facts as text for screen readers and for reading exact
// figures. Used by app.js (whose el() it borrows) for every transmission that carries a waveform.
'use strict';

const Waveform = (() => {
  const SVG = 'http://www.w3.org/2000/svg';
  const ZOOMS = [0.5, 1, 2, 4, 8, 16, 32, 64];   // pixels per millisecond
  const DEFAULT_ZOOM = 4;                        // 8 px/ms: a 562 µs NEC mark is 4.5 px wide
  const TICKS = [0.1, 0.2, 0.5, 1, 2, 5, 10, 20, 50, 100, 200, 500, 1000];  // ms between labels
  const HIGH = 6, LOW = 30, AXIS = 36, HEIGHT = 52, PAD = 8;
  const zooms = new Map();   // transmission key -> index in ZOOMS; survives the timeline's re-renders

  function svg(tag, attrs) {
    const node = document.createElementNS(SVG, tag);
    for (const [name, value] of Object.entries(attrs || {})) node.setAttribute(name, value);
    return node;
  }

  function number(value, digits) { return String(Number(value.toFixed(digits))); }

  // "34 marks, 67.5 ms, 38 kHz": what the drawing shows, in words.
  function summary(waveform, carrier) {
    const marks = Math.ceil(waveform.length / 2);
    const total = waveform.reduce((sum, d) => sum + d, 0);
    const modulation = carrier > 0 ? number(carrier / 1000, 1) + ' kHz' : 'no carrier';
    return marks + (marks === 1 ? ' mark, ' : ' marks, ') + number(total / 1000, 1) + ' ms, ' + modulation;
  }

  function tickStep(scale) {
    return TICKS.find((step) => step * scale >= 60) || TICKS[TICKS.length - 1];
  }

  function draw(waveform, scale, label) {
    const total = waveform.reduce((sum, d) => sum + d, 0) / 1000;
    const width = Math.ceil(total * scale) + 2 * PAD;
    const picture = svg('svg', { width, height: HEIGHT, viewBox: `0 0 ${width} ${HEIGHT}`,
      role: 'img', 'aria-label': label, class: 'wave-svg' });
    const title = svg('title');
    title.textContent = label;
    picture.append(title);
    picture.append(svg('line', { x1: PAD, x2: width - PAD, y1: LOW, y2: LOW, class: 'wave-base' }));
    let at = 0;   // microseconds from the first mark
    waveform.forEach((duration, i) => {
      if (i % 2 === 0) {
        picture.append(svg('rect', { class: 'mark', x: (PAD + at / 1000 * scale).toFixed(2), y: HIGH,
          width: Math.max(duration / 1000 * scale, 0.5).toFixed(2), height: LOW - HIGH,
          'data-us': duration }));
      }
      at += duration;
    });
    const step = tickStep(scale);
    for (let t = 0; t <= total + 1e-9; t += step) {
      const x = (PAD + t * scale).toFixed(2);
      picture.append(svg('line', { x1: x, x2: x, y1: LOW, y2: AXIS, class: 'wave-tick' }));
      const text = svg('text', { x, y: HEIGHT - 2, class: 'wave-label',
        'text-anchor': t === 0 ? 'start' : 'middle' });
      text.textContent = number(t, 1) + (t === 0 ? ' ms' : '');
      picture.append(text);
    }
    return picture;
  }

  // A figure for one transmission: the caption (summary and measured on-air time), zoom buttons
  // and the scrollable drawing. `key` names the transmission so its zoom is kept.
  function figure(tx, key) {
    const label = summary(tx.waveform, tx.carrier || 0);
    const caption = el('figcaption', { class: 'wave-text', text: label +
      (typeof tx.onAirUs === 'number' ? ' · on air ' + number(tx.onAirUs / 1000, 1) + ' ms' : '') });
    const scroller = el('div', { class: 'wave-scroll', tabindex: '0', role: 'group',
      'aria-label': 'waveform, scrollable' });
    const zoomText = el('span', { class: 'wave-zoom note', 'aria-live': 'polite' });
    const render = () => {
      const index = zooms.has(key) ? zooms.get(key) : DEFAULT_ZOOM;
      const scale = ZOOMS[index];
      // Keep the moment at the left edge in view when the scale changes.
      const left = scroller.scrollLeft / (scroller.dataset.scale || scale);
      scroller.replaceChildren(draw(tx.waveform, scale, label));
      scroller.dataset.scale = scale;
      scroller.scrollLeft = left * scale;
      zoomText.textContent = scale + ' px/ms';
      zoomOut.disabled = index === 0;
      zoomIn.disabled = index === ZOOMS.length - 1;
    };
    const zoom = (by) => {
      const index = zooms.has(key) ? zooms.get(key) : DEFAULT_ZOOM;
      zooms.set(key, Math.min(Math.max(index + by, 0), ZOOMS.length - 1));
      render();
    };
    const zoomOut = el('button', { type: 'button', class: 'small', 'aria-label': 'zoom out', text: '−',
      onclick: () => zoom(-1) });
    const zoomIn = el('button', { type: 'button', class: 'small', 'aria-label': 'zoom in', text: '+',
      onclick: () => zoom(1) });
    const tools = el('div', { class: 'wave-tools' }, caption,
      el('span', { class: 'wave-zoombox' }, zoomOut, zoomText, zoomIn));
    const box = el('figure', { class: 'wave' }, tools, scroller);
    // The timeline row selects on click and Enter; the zoom buttons keep theirs to themselves.
    for (const button of [zoomOut, zoomIn]) {
      button.addEventListener('click', (event) => event.stopPropagation());
      button.addEventListener('keydown', (event) => event.stopPropagation());
    }
    render();
    return box;
  }

  return { figure, summary };
})();
