// The page of an export: its folders, a list that is drawn as far as it is seen, and a preview.
// Whatever comes from mails is put down as text, never as markup.
'use strict';

// The places of a row, as the export writes them.
const FOLDER = 0, DATE = 1, FROM = 2, ADDRESS = 3, SUBJECT = 4, TO = 5, SIZE = 6, KIND = 7,
  STATUS = 8, REASON = 9, EMBEDDED = 10, BASE = 11, FORMS = 12, ATTACHED = 13;
// Forms that a browser shows, the best first.
const SHOWN = ['html', 'text', 'pdf'];

const find = (id) => document.getElementById(id);
const page = {
  filter: find('filter'), count: find('count'), tree: find('tree'), list: find('list'),
  rows: find('rows'), nothing: find('nothing'), preview: find('preview'), frame: find('frame'),
  main: document.querySelector('main'), menu: find('menu'), columns: find('columns'),
};

const SANDBOX = page.frame.getAttribute('sandbox');

const mail = {
  about: { pieces: 0, items: 0, folders: [] },
  rows: [],       // all, in the order of the export
  texts: [],      // of each what the filter looks at
  shown: [],      // the numbers of those that the list has, in its order
  orders: new Map(),
  column: 'date',
  down: true,
  folders: null,  // the numbers of the chosen folders; null for all
  chosen: -1,     // the number of the chosen row
  loaded: 0,
};

const make = (name, className, text) => {
  const element = document.createElement(name);
  if (className) element.className = className;
  if (text !== undefined) element.textContent = text;
  return element;
};
// What marks of direction in one text do ends with it.
const isolated = (name, className, text) => {
  const element = make(name, className, text);
  element.dir = 'auto';
  return element;
};
const folded = (text) => text.normalize('NFKD').replace(/\p{M}/gu, '').toLowerCase();
const number = new Intl.NumberFormat();
const day = new Intl.DateTimeFormat(undefined, { dateStyle: 'medium' });
const minute = new Intl.DateTimeFormat(undefined, { timeStyle: 'short' });
const full = new Intl.DateTimeFormat(undefined, { dateStyle: 'full', timeStyle: 'medium' });
const dateText = (format, iso) => {
  const date = new Date(iso);
  return iso && !isNaN(date) ? format.format(date) : '';
};
const sizeText = (bytes) => {
  if (!bytes) return '';
  if (bytes < 1000) return bytes + ' B';
  if (bytes < 1e6) return Math.round(bytes / 1e3) + ' kB';
  return number.format(Math.round(bytes / 1e5) / 10) + ' MB';
};
const address = (base, file) => (base + file).split('/').map(encodeURIComponent).join('/');

// ---- Data: one script after the other, so that the list can be used when the first has come.

function load(name) {
  const script = document.createElement('script');
  script.src = 'index/' + name;
  script.onerror = () => { page.count.textContent = 'index/' + name + ' is missing'; };
  document.body.append(script);
}

function loadPiece() {
  if (mail.loaded < mail.about.pieces) {
    load('data-' + String(mail.loaded + 1).padStart(4, '0') + '.js');
  }
}

window.mailAbout = (json) => {
  mail.about = JSON.parse(json);
  drawTree();
  if (mail.about.pieces === 0) update();
  loadPiece();
};

window.mailPiece = (piece, json) => {
  for (const row of JSON.parse(json)) {
    let text = row[FROM] + '\n' + row[ADDRESS] + '\n' + row[SUBJECT] + '\n' + row[TO];
    for (let at = 0; at < row[ATTACHED].length; at += 3) text += '\n' + row[ATTACHED][at];
    mail.texts.push(folded(text));
    mail.rows.push(row);
  }
  mail.loaded = piece;
  mail.orders.clear();
  loadPiece();
  // In between not every piece is worth sorting all.
  if (piece === 1 || piece === mail.about.pieces || piece % 8 === 0) update();
};

// ---- The list.

const collator = new Intl.Collator(undefined, { sensitivity: 'base', numeric: true });
const compare = {
  date: (one, other) => (one[DATE] < other[DATE] ? -1 : one[DATE] > other[DATE] ? 1 : 0),
  size: (one, other) => one[SIZE] - other[SIZE],
  from: (one, other) => collator.compare(one[FROM], other[FROM]),
  subject: (one, other) => collator.compare(one[SUBJECT], other[SUBJECT]),
};

// The numbers of all rows by a column, kept until more rows come.
function orderBy(column) {
  if (!mail.orders.has(column)) {
    const by = compare[column];
    const order = Array.from(mail.rows.keys());
    order.sort((one, other) => by(mail.rows[one], mail.rows[other]) || one - other);
    mail.orders.set(column, order);
  }
  return mail.orders.get(column);
}

function update() {
  const words = folded(page.filter.value).split(/\s+/).filter(Boolean);
  const order = orderBy(mail.column);
  const shown = [];
  for (let at = 0; at < order.length; ++at) {
    const row = order[mail.down ? order.length - 1 - at : at];
    if (mail.folders && !mail.folders.has(mail.rows[row][FOLDER])) continue;
    const text = mail.texts[row];
    if (words.every((word) => text.includes(word))) shown.push(row);
  }
  mail.shown = shown;
  const isAll = mail.loaded >= mail.about.pieces;
  page.count.textContent = (shown.length === mail.rows.length ? '' : number.format(shown.length) +
    ' of ') + number.format(mail.rows.length) + (isAll ? '' : ' …') +
    (mail.rows.length === 1 ? ' message' : ' messages');
  page.nothing.hidden = shown.length !== 0 || !isAll;
  page.nothing.textContent = mail.rows.length === 0 ? 'This export has no messages.' :
    'No message has all of these words.';
  for (const button of page.columns.children) {
    const isBy = button.dataset.column === mail.column;
    button.setAttribute('aria-pressed', String(isBy));
    button.classList.toggle('down', isBy && mail.down);
  }
  drawRows();
}

const rowHeight = () => parseFloat(getComputedStyle(document.documentElement)
  .getPropertyValue('--row'));

let drawn = new Map();  // elements by place in the list

// Only what is seen, and a little around it.
function drawRows() {
  const height = rowHeight();
  page.rows.style.height = mail.shown.length * height + 'px';
  const first = Math.max(0, Math.floor(page.list.scrollTop / height) - 8);
  const last = Math.min(mail.shown.length,
    Math.ceil((page.list.scrollTop + page.list.clientHeight) / height) + 8);
  const kept = new Map();
  for (let at = first; at < last; ++at) {
    const row = mail.shown[at];
    let element = drawn.get(at);
    if (element && element.mailRow === row) {
      drawn.delete(at);
    } else {
      element = rowElement(row, at);
      page.rows.append(element);
    }
    element.style.top = at * height + 'px';
    element.setAttribute('aria-setsize', mail.shown.length);
    element.setAttribute('aria-selected', String(row === mail.chosen));
    kept.set(at, element);
  }
  for (const element of drawn.values()) element.remove();
  drawn = kept;
  const at = mail.shown.indexOf(mail.chosen);
  if (at >= first && at < last) page.list.setAttribute('aria-activedescendant', 'row-' + at);
  else page.list.removeAttribute('aria-activedescendant');
}

function rowElement(row, at) {
  const data = mail.rows[row];
  const element = make('div', 'row');
  element.mailRow = row;
  element.id = 'row-' + at;
  element.setAttribute('role', 'option');
  element.setAttribute('aria-posinset', at + 1);
  const subject = make('span', 'subject');
  if (data[STATUS] !== 0) {
    const sign = make('span', 'trouble', '!');
    sign.title = data[REASON];
    subject.append(sign);
  }
  if (data[EMBEDDED]) subject.append(make('span', 'clip', '↳'));
  if (data[ATTACHED].length) subject.append(make('span', 'clip', '📎\uFE0E'));
  subject.append(isolated('bdi', '', data[SUBJECT] || '(no subject)'));
  const date = make('span', 'date', dateText(day, data[DATE]));
  date.append(make('span', 'time', ' ' + dateText(minute, data[DATE])));
  element.append(isolated('span', 'from', data[FROM] || '(nobody)'), subject,
    make('span', 'size', sizeText(data[SIZE])), date);
  return element;
}

function choose(at, open) {
  if (mail.shown.length === 0) return;
  at = Math.min(Math.max(at, 0), mail.shown.length - 1);
  mail.chosen = mail.shown[at];
  const height = rowHeight();
  const top = at * height;
  if (top < page.list.scrollTop) page.list.scrollTop = top;
  const bottom = top + height - page.list.clientHeight;
  if (bottom > page.list.scrollTop) page.list.scrollTop = bottom;
  drawRows();
  clearTimeout(choose.later);
  // Whoever runs through the list does not wait for each.
  if (open) show();
  else choose.later = setTimeout(show, 150);
}

// ---- The preview.

function show() {
  clearTimeout(choose.later);
  const data = mail.rows[mail.chosen];
  if (!data) return;
  find('subject').replaceChildren(isolated('bdi', '', data[SUBJECT] || '(no subject)'));
  const folder = mail.about.folders[data[FOLDER]];
  const fields = [
    ['From', data[ADDRESS] ? data[FROM] + ' <' + data[ADDRESS] + '>' : data[FROM]],
    ['To', data[TO]], ['Date', dateText(full, data[DATE])],
    ['Folder', [folder[0].replace(/.*\//, ''), ...folder[1]].join(' › ')],
    ['Kind', data[KIND] === 'IPM.Note' ? '' : data[KIND]],
  ];
  // The message as HTML has its own header.
  const has = data[FORMS].includes('html') ? ['Folder', 'Kind'] : fields.map((field) => field[0]);
  const told = fields.filter((field) => field[1] && has.includes(field[0]));
  find('fields').replaceChildren(...told.flatMap(
    (field) => [make('dt', '', field[0]), isolated('dd', '', field[1])]));
  find('reason').hidden = data[STATUS] === 0;
  find('reason').textContent = (data[STATUS] === 2 ? 'Not exported: ' : 'Not whole: ') +
    data[REASON];
  const attached = [];
  for (let at = 0; at < data[ATTACHED].length; at += 3) {
    const [name, file, bytes] = data[ATTACHED].slice(at, at + 3);
    const item = make('li');
    const label = [name || file.replace(/.*\//, ''), sizeText(bytes)].filter(Boolean).join(' · ');
    item.append(link(label, address(data[BASE], file)));
    attached.push(item);
  }
  find('attachments').replaceChildren(...attached);
  const forms = new Map();
  for (let at = 0; at < data[FORMS].length; at += 2) {
    const [form, place] = data[FORMS][at].split('#');
    forms.set(form, address(data[BASE], data[FORMS][at + 1]) + (place ? `#${place}` : ''));
  }
  find('forms').replaceChildren(...Array.from(forms, ([form, file]) => link(form, file)));
  const best = SHOWN.find((form) => forms.has(form));
  // A frame of its own each time, so that going back leaves the page.
  const frame = page.frame.cloneNode(false);
  frame.removeAttribute('src');
  // Browsers show no PDF within a sandbox, and those of an export have nothing that runs.
  if (best === 'pdf') frame.removeAttribute('sandbox');
  else frame.setAttribute('sandbox', SANDBOX);
  if (best) frame.src = forms.get(best);
  frame.hidden = !best;
  page.frame.replaceWith(frame);
  page.frame = frame;
  page.preview.hidden = false;
  page.main.classList.add('reading');
  drawRows();
}

function link(text, file) {
  const element = isolated('a', '', text);
  element.href = file;
  element.target = '_blank';
  element.rel = 'noopener noreferrer';
  element.title = text;
  return element;
}

function closePreview() {
  clearTimeout(choose.later);
  page.preview.hidden = true;
  page.frame.removeAttribute('src');
  page.main.classList.remove('reading');
  page.list.focus();
  drawRows();
}

// ---- Folders: a source, and the names below it. Where there are very many sources, those of one
// mail are their folder on the disk, all together.

const MANY = 100;        // sources
const ALL_DRAWN = 2000;  // folders

function drawTree() {
  const root = { label: 'All messages', items: mail.about.items, numbers: null, below: new Map() };
  const perSource = new Map();
  for (const [source, , items] of mail.about.folders) {
    perSource.set(source, (perSource.get(source) || 0) + items);
  }
  const isJoined = (source) => perSource.size > MANY && perSource.get(source) === 1;
  let nodes = 0;
  mail.about.folders.forEach(([source, names, items], number) => {
    let node = root;
    const path = isJoined(source) ? [source.replace(/[^/]*$/, '')] : [source, ...names];
    for (const name of path) {
      if (!node.below.has(name)) {
        node.below.set(name, { label: name, title: name, items: 0, numbers: new Set(),
          below: new Map() });
        ++nodes;
      }
      node = node.below.get(name);
      node.items += items;
      node.numbers.add(number);
    }
  });
  for (const node of root.below.values()) {
    node.label = node.label.replace(/\/+$/, '').replace(/.*\//, '') || node.label;
  }
  mail.drawsAll = nodes <= ALL_DRAWN;
  const all = treeItem({ ...root, below: new Map() }, 1);
  page.tree.replaceChildren(all, ...Array.from(root.below.values(), (node) => treeItem(node, 1)));
  all.tabIndex = 0;
  all.setAttribute('aria-selected', 'true');
}

function treeItem(node, level) {
  const item = make('li');
  item.mailFolders = node.numbers;
  item.tabIndex = -1;
  item.setAttribute('role', 'treeitem');
  item.setAttribute('aria-level', level);
  item.setAttribute('aria-selected', 'false');
  const line = make('div', 'folder');
  const label = isolated('span', '', node.label);
  label.title = node.title || node.label;
  line.append(make('b', '', node.below.size ? '▶' : ''), label,
    make('i', '', number.format(node.items)));
  item.append(line);
  if (node.below.size) {
    item.mailNode = node;
    item.setAttribute('aria-expanded', String(mail.drawsAll && level < 3));
    if (mail.drawsAll) fill(item);
  }
  return item;
}

// Of very many folders what is below one is drawn when that is opened.
function fill(item) {
  const node = item.mailNode;
  if (!node) return;
  item.mailNode = null;
  const level = Number(item.getAttribute('aria-level')) + 1;
  const group = make('ul');
  group.setAttribute('role', 'group');
  group.append(...Array.from(node.below.values(), (each) => treeItem(each, level)));
  item.append(group);
}

function chooseFolder(item) {
  for (const each of page.tree.querySelectorAll('[aria-selected="true"]')) {
    each.setAttribute('aria-selected', 'false');
  }
  item.setAttribute('aria-selected', 'true');
  focusFolder(item);
  mail.folders = item.mailFolders;
  page.list.scrollTop = 0;
  update();
}

function focusFolder(item) {
  for (const each of page.tree.querySelectorAll('[tabindex="0"]')) each.tabIndex = -1;
  item.tabIndex = 0;
  item.focus();
}

function expand(item, isOpen) {
  if (!item.hasAttribute('aria-expanded')) return;
  if (isOpen) fill(item);
  item.setAttribute('aria-expanded', String(isOpen));
}

function browse(isOpen) {
  page.main.classList.toggle('browsing', isOpen);
  page.menu.setAttribute('aria-expanded', String(isOpen));
}

// ---- What people do.

page.filter.addEventListener('input', () => {
  page.list.scrollTop = 0;
  update();
});
page.filter.addEventListener('keydown', (event) => {
  if (event.key !== 'ArrowDown' && event.key !== 'Enter') return;
  event.preventDefault();
  page.list.focus();
  choose(0, event.key === 'Enter');
});
page.list.addEventListener('scroll', () => requestAnimationFrame(drawRows), { passive: true });
page.list.addEventListener('click', (event) => {
  const element = event.target.closest('.row');
  if (element) choose(mail.shown.indexOf(element.mailRow), true);
});
page.list.addEventListener('keydown', (event) => {
  const at = mail.shown.indexOf(mail.chosen);
  const screen = Math.max(1, Math.floor(page.list.clientHeight / rowHeight()) - 1);
  const steps = { ArrowDown: at + 1, ArrowUp: at - 1, PageDown: at + screen, PageUp: at - screen,
    Home: 0, End: mail.shown.length - 1 };
  if (event.key in steps && !event.ctrlKey && !event.metaKey && !event.altKey) {
    choose(steps[event.key], false);
  } else if (event.key === 'Enter') {
    choose(at, true);
    page.frame.focus();
  } else {
    return;
  }
  event.preventDefault();
});
page.columns.addEventListener('click', (event) => {
  const column = event.target.dataset.column;
  if (!column) return;
  // Dates and sizes begin with the greatest.
  mail.down = mail.column === column ? !mail.down : column === 'date' || column === 'size';
  mail.column = column;
  update();
});
page.tree.addEventListener('click', (event) => {
  const item = event.target.closest('[role="treeitem"]');
  if (!item) return;
  if (event.target.tagName === 'B') {
    expand(item, item.getAttribute('aria-expanded') === 'false');
  } else {
    chooseFolder(item);
    browse(false);
  }
});
page.tree.addEventListener('keydown', (event) => {
  const item = event.target.closest('[role="treeitem"]');
  if (!item) return;
  const seen = Array.from(page.tree.querySelectorAll('[role="treeitem"]')).filter(
    (each) => each.offsetParent !== null);
  const at = seen.indexOf(item);
  const isOpen = item.getAttribute('aria-expanded') === 'true';
  const outer = item.parentElement.closest('[role="treeitem"]');
  const actions = {
    ArrowDown: () => focusFolder(seen[Math.min(at + 1, seen.length - 1)]),
    ArrowUp: () => focusFolder(seen[Math.max(at - 1, 0)]),
    Home: () => focusFolder(seen[0]),
    End: () => focusFolder(seen[seen.length - 1]),
    ArrowRight: () => (isOpen ? focusFolder(seen[at + 1]) : expand(item, true)),
    ArrowLeft: () => (isOpen ? expand(item, false) : outer && focusFolder(outer)),
    Enter: () => { chooseFolder(item); browse(false); },
    ' ': () => chooseFolder(item),
  };
  if (!(event.key in actions)) return;
  event.preventDefault();
  actions[event.key]();
});
page.menu.addEventListener('click', () => browse(!page.main.classList.contains('browsing')));
find('back').addEventListener('click', closePreview);
document.addEventListener('keydown', (event) => {
  if (event.key === '/' && event.target !== page.filter) {
    event.preventDefault();
    page.filter.focus();
    page.filter.select();
  } else if (event.key === 'Escape') {
    if (event.target === page.filter && page.filter.value) {
      page.filter.value = '';
      update();
    } else if (page.main.classList.contains('browsing')) {
      browse(false);
    } else if (!page.preview.hidden) {
      closePreview();
    } else {
      page.list.focus();
    }
  }
});
window.addEventListener('resize', () => requestAnimationFrame(drawRows));

load('about.js');
