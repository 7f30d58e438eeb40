// The web remote: remotes built from the pairing list, a timeline fed by the server's event
// stream (shared by every browser), learning from a receiver, a request composer and a
// pairing-list editor.
'use strict';

const requests = new Map();   // id -> {id, request, result, log: [], transmissions: []}
let selected = 0;

function el(tag, attrs, ...children) {
  const node = document.createElement(tag);
  for (const [name, value] of Object.entries(attrs || {})) {
    if (name === 'class') node.className = value;
    else if (name === 'text') node.textContent = value;
    else if (name.startsWith('on')) node.addEventListener(name.slice(2), value);
    else if (value !== false && value !== undefined && value !== null) node.setAttribute(name, value === true ? '' : value);
  }
  for (const child of children) if (child) node.append(child);
  return node;
}

function ms(microseconds) { return typeof microseconds === 'number' ? (microseconds / 1000).toFixed(1) + ' ms' : ''; }

async function api(method, path, body) {
  const init = { method, headers: {} };
  if (body !== undefined) {
    init.headers['Content-Type'] = 'application/json';
    init.body = typeof body === 'string' ? body : JSON.stringify(body);
  }
  const response = await fetch(path, init);
  let data = null;
  try { data = await response.json(); } catch (e) { data = { error: 'unreadable answer from the server' }; }
  return { status: response.status, data };
}

// One line on what became of a request: ok, the refusal and its reason, why no answer came, or
// why it was not sent at all.
function outcome(result) {
  if (!result) return { text: 'waiting…', cls: 'pending' };
  if (result.error) return { text: 'not sent: ' + result.error, cls: 'bad' };
  if (result.outcome === 'ok') return { text: 'ok', cls: 'ok' };
  const code = result.answer ? result.answer.errorCode + ': ' : '';
  return { text: code + (result.reason || result.outcome || 'no answer'), cls: 'bad' };
}

function show(output, result) {
  const o = outcome(result);
  output.textContent = o.text;
  output.className = 'result ' + o.cls;
}

async function send(path, body, output) {
  output.textContent = 'sending…';
  output.className = 'result pending';
  try {
    const { data } = await api('POST', path, body);
    show(output, data);
  } catch (e) {
    output.textContent = 'the server cannot be reached';
    output.className = 'result bad';
  }
}

// ---- remotes ------------------------------------------------------------------------------

function keyRemote(device, card, output) {
  const keys = el('div', { class: 'keys', role: 'group', 'aria-label': device.kind + ' keys' });
  const shown = device.keys.length ? device.keys
    : device.allowed.map((code) => ({ name: 'key ' + code, code, allowed: true }));
  for (const key of shown) {
    const title = key.allowed ? 'key ' + key.code
      : 'key ' + key.code + ' is not one this appliance accepts';
    keys.append(el('button', {
      type: 'button', 'data-key': key.name, 'data-code': key.code, title, disabled: !key.allowed,
      'aria-label': key.name + (key.allowed ? '' : ' (not accepted)'), text: key.name.replace(/_/g, ' '),
      onclick: () => send('/api/key', { type: device.type, codeset: device.codeset, key: key.code }, output),
    }));
  }
  if (!shown.length) card.append(el('p', { class: 'note', text: 'No key map and no known keys for this type.' }));
  card.append(keys);
}

function select(name, words, value) {
  const box = el('select', { name });
  for (const word of words) box.append(el('option', { value: word, text: word, selected: word === value }));
  return box;
}

// The paired codeset's key map says what the unit can do, in the IR library's words:
// {"modes":[...],"fan":[...],"setpoint":[min,max]} (and "power" where it is not on/off).
const LIBRARY_WORD = { ON: 'on', OFF: 'off', AUTO: 'auto', COLD: 'cool', DEHUMI: 'dry', VENT: 'fan', HEAT: 'heat',
  LOW: 'low', MEDIUM: 'medium', HIGH: 'high' };

function acKeyMap(device) {
  try {
    const map = JSON.parse(device.keyMap || '{}');
    return map && typeof map === 'object' ? map : {};
  } catch (e) {
    return {};
  }
}

function offered(words, reported) {
  return Array.isArray(reported) ? words.filter((word) => reported.includes(LIBRARY_WORD[word])) : words;
}

function acRemote(device, card, output) {
  const form = el('form', { class: 'ac' });
  const map = acKeyMap(device);
  const power = select('power', offered(device.ac.power, map.power), 'ON');
  const mode = select('mode', offered(device.ac.mode, map.modes), 'COLD');
  const fan = select('fan', offered(device.ac.fan, map.fan), 'AUTO');
  const range = Array.isArray(map.setpoint) && map.setpoint.length === 2 ? map.setpoint.map(Number) : [-100, 100];
  const start = String(Math.min(Math.max(24, range[0]), range[1]));
  const setpoint = el('input', { name: 'setpoint', type: 'number', value: start, min: String(range[0]),
    max: String(range[1]), step: '1' });
  form.append(el('div', { class: 'row' },
    el('label', {}, 'Power', power), el('label', {}, 'Mode', mode),
    el('label', {}, 'Set point', setpoint), el('label', {}, 'Fan', fan)));
  form.append(el('button', { type: 'submit', text: 'Send state' }));
  form.addEventListener('submit', (event) => {
    event.preventDefault();
    send('/api/ac', { codeset: device.codeset, power: power.value, mode: mode.value,
      setpoint: Number(setpoint.value), fan: fan.value }, output);
  });
  card.append(form);
}

function renderRemotes(list) {
  const box = document.getElementById('remotes');
  box.replaceChildren();
  if (!list.devices.length) box.append(el('p', { class: 'note', text: 'No appliance is paired.' }));
  for (const device of list.devices) {
    const output = el('output', { class: 'result', 'aria-live': 'polite' });
    const card = el('article', { class: 'remote', 'data-codeset': device.codeset, 'data-kind': device.kind,
      'aria-label': device.kind + ' ' + device.codeset });
    card.append(el('h3', {}, document.createTextNode(device.kind + ' '),
      el('span', { class: 'sub', text: device.codeset + ' · transmitter #' + device.device_index })));
    if (device.ac) acRemote(device, card, output);
    else keyRemote(device, card, output);
    card.append(el('button', { type: 'button', class: 'learn', text: device.ac ? 'Learn' : 'Learn a key',
      'aria-label': (device.ac ? 'learn the air conditioner ' : 'learn a key of ') + device.codeset,
      onclick: () => openLearn(device) }));
    card.append(output);
    box.append(card);
  }
  const text = document.getElementById('pairing-text');
  if (document.activeElement !== text) text.value = JSON.stringify(list.pairing, null, 2);
}

async function loadDevices() {
  const { status, data } = await api('GET', '/api/devices');
  if (status === 200) renderRemotes(data);
}

// ---- learning -----------------------------------------------------------------------------
// One learn at a time on the server; every browser follows its steps on the event stream.

let learnTarget = null;   // {codeset, ac}: what the form starts
let learnShown = 0;       // waveforms drawn, to key their zoom

function openLearn(device) {
  learnTarget = { codeset: device.codeset, ac: Boolean(device.ac) };
  document.getElementById('learn-section').hidden = false;
  document.getElementById('learn-which').textContent = (device.ac ? 'air conditioner ' : 'a key of ') + device.codeset;
  document.getElementById('learn-key-row').hidden = learnTarget.ac;
  document.getElementById('learn-key').required = !learnTarget.ac;
  document.getElementById('learn-code').required = !learnTarget.ac;
  (learnTarget.ac ? document.getElementById('learn-start') : document.getElementById('learn-key')).focus();
}

function learnStatus(text, cls) {
  const status = document.getElementById('learn-status');
  status.textContent = text;
  status.className = 'result ' + cls;
}

function learnRunning(running) {
  document.getElementById('learn-start').disabled = running;
  document.getElementById('learn-cancel').disabled = !running;
}

async function startLearn(event) {
  event.preventDefault();
  if (!learnTarget) return;
  const body = { codeset: learnTarget.codeset };
  if (learnTarget.ac) body.ac = true;
  else {
    body.key = document.getElementById('learn-key').value.trim();
    body.code = Number(document.getElementById('learn-code').value);
  }
  document.getElementById('learn-steps').replaceChildren();
  learnStatus('starting…', 'pending');
  try {
    const { status, data } = await api('POST', '/api/learn', body);
    if (status !== 202) learnStatus('Not started: ' + data.error, 'bad');
  } catch (e) {
    learnStatus('the server cannot be reached', 'bad');
  }
}

// What arrived: protocol and code in words, and the timings drawn when they are all there is.
function learnFrame(frame, press) {
  const item = el('li', { class: 'learn-frame', 'data-press': press, text: 'press ' + press + ': ' + frame.summary });
  if (Array.isArray(frame.durations) && frame.durations.length) {
    item.append(Waveform.figure({ waveform: frame.durations, carrier: frame.carrier || 0 }, 'learn:' + ++learnShown));
  }
  return item;
}

function onLearn(data) {
  document.getElementById('learn-section').hidden = false;
  const steps = document.getElementById('learn-steps');
  const what = data.ac ? 'any button of the air conditioner\'s remote' : '\'' + data.key + '\'';
  switch (data.step) {
    case 'waiting':
      learnRunning(true);
      learnStatus(data.press === 1 ? 'Press ' + what + ' on the remote.' : 'Press ' + what + ' once more.', 'pending');
      break;
    case 'arrived': steps.append(learnFrame(data.frame, data.press)); break;
    case 'raw': steps.append(el('li', { class: 'note', text: data.text + ': kept as raw timings' })); break;
    case 'overflow': steps.append(el('li', { class: 'note', text: data.text })); break;
    case 'differ':
      steps.append(el('li', { class: 'bad learn-differ', text: 'The presses differ (' + data.text + ': ' +
        data.first.summary + ', then ' + data.frame.summary + '); once more from the start.' }));
      break;
    case 'saved':
      learnRunning(false);
      learnStatus(data.text + (data.reloaded ? '' : ' The remote could not take it: ' + data.reloadError),
        data.reloaded ? 'ok' : 'bad');
      break;
    case 'failed':
      learnRunning(false);
      learnStatus('Not learned: ' + data.reason, 'bad');
      break;
    default: break;
  }
}

// ---- timeline -----------------------------------------------------------------------------

function entry(id) {
  if (!requests.has(id)) requests.set(id, { id, request: null, result: null, log: [], transmissions: [] });
  return requests.get(id);
}

function describe(item) {
  if (item.result && item.result.summary) return item.result.label + ' ' + item.result.summary;
  const r = item.request || {};
  if (r.command === 'key') return (r.type || '?') + ' key ' + (r.key !== undefined ? r.key : '?');
  if (r.command === 'ac') return 'ac ' + [r.power, r.mode, r.setpoint, r.fan].filter((v) => v !== undefined).join(' ');
  if (r.properties) return r.properties.length + ' properties';
  return (r.name || 'setKeyEvent') + ' ' + String(r.value === undefined ? '' : JSON.stringify(r.value)).slice(0, 40);
}

function renderItem(item) {
  let li = document.querySelector('#timeline li[data-id="' + item.id + '"]');
  if (!li) {
    li = el('li', { 'data-id': item.id, tabindex: '0', role: 'option', 'aria-selected': 'false',
      onclick: () => selectRequest(item.id),
      onkeydown: (event) => {
        if (event.key === 'Enter' || event.key === ' ') { event.preventDefault(); selectRequest(item.id); }
      } });
    document.getElementById('timeline').prepend(li);
  }
  const o = outcome(item.result);
  const head = el('div', { class: 'head' }, el('span', { class: 'id', text: '#' + item.id }),
    el('span', { class: 'what', text: describe(item) }), el('span', { class: 'answer ' + o.cls, text: o.text }));
  const times = [];
  if (item.result && item.result.elapsedUs !== undefined) {
    times.push('answer at ' + ms(item.result.elapsedUs) + (item.result.answer && item.result.answer.late ? ' (late)' : ''));
  }
  const parts = [head];
  if (times.length) parts.push(el('div', { class: 'time note', text: times.join(' · ') }));
  item.transmissions.forEach((tx, index) => {
    parts.push(el('div', { class: 'tx', text: '→ ' + tx.text + ' on air ' + ms(tx.onAirStartUs) + ' – ' +
      ms(tx.onAirEndUs) + (tx.late ? ' (late)' : '') }));
    if (tx.transmitError) parts.push(el('div', { class: 'tx bad', text: 'not on air: ' + tx.transmitError }));
    if (Array.isArray(tx.waveform) && tx.waveform.length) parts.push(Waveform.figure(tx, item.id + ':' + index));
  });
  li.replaceChildren(...parts);
  li.setAttribute('aria-selected', String(item.id === selected));
  if (item.id === selected) renderLog();
}

function selectRequest(id) {
  selected = id;
  for (const li of document.querySelectorAll('#timeline li')) {
    li.setAttribute('aria-selected', String(Number(li.dataset.id) === id));
  }
  renderLog();
}

function renderLog() {
  const item = requests.get(selected);
  const list = document.getElementById('log');
  document.getElementById('log-which').textContent = item ? 'of request #' + item.id : '';
  list.replaceChildren();
  if (!item) return;
  if (!item.log.length) list.append(el('li', { class: 'note', text: 'No log lines yet.' }));
  for (const line of item.log) {
    list.append(el('li', { class: 'p' + line.priority, text: line.text.replace(/\x1b\[[0-9;]*m/g, '').trimEnd() }));
  }
}

function onEvent(event) {
  let data;
  try { data = JSON.parse(event.data); } catch (e) { return; }
  if (data.type === 'devices') { loadDevices(); return; }
  if (data.type === 'learn') { onLearn(data); return; }
  if (!data.id) return;   // a log line outside any request
  const item = entry(data.id);
  if (data.type === 'request') item.request = data.request;
  else if (data.type === 'log') item.log.push(data);
  else if (data.type === 'transmission') item.transmissions.push(data);
  else if (data.type === 'answer') {
    item.result = data;
    // The answer carries the whole record: it wins over what the stream delivered piecemeal.
    item.log = data.log || item.log;
    item.transmissions = data.ir || item.transmissions;
  }
  if (data.type !== 'log' || data.id === selected) renderItem(item);
}

function connect() {
  const status = document.getElementById('status');
  const source = new EventSource('/api/events');
  source.onopen = () => { status.textContent = 'live'; status.className = 'status live'; };
  source.onerror = () => { status.textContent = 'reconnecting…'; status.className = 'status down'; };
  source.onmessage = onEvent;
}

// ---- forms --------------------------------------------------------------------------------

function setUpForms() {
  document.getElementById('composer').addEventListener('submit', (event) => {
    event.preventDefault();
    send('/api/requests', {
      name: document.getElementById('composer-name').value,
      kind: document.getElementById('composer-kind').value,
      value: document.getElementById('composer-value').value,
    }, document.getElementById('composer-result'));
  });
  document.getElementById('learn-form').addEventListener('submit', startLearn);
  document.getElementById('learn-cancel').addEventListener('click', async () => {
    const { status, data } = await api('DELETE', '/api/learn');
    if (status !== 200) learnStatus(data.error, 'bad');
  });
  document.getElementById('pairing').addEventListener('submit', async (event) => {
    event.preventDefault();
    const output = document.getElementById('pairing-result');
    const { status, data } = await api('PUT', '/api/devices', document.getElementById('pairing-text').value);
    output.className = 'result ' + (status === 200 ? 'ok' : 'bad');
    output.textContent = status === 200 ? 'saved: ' + data.devices.length + ' paired appliance(s)' : data.error;
    if (status === 200) renderRemotes(data);
  });
}

setUpForms();
connect();
loadDevices();
