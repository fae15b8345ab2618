// What the page that `xdm show --html` writes does. Texts of the model get into the page as text only, never as markup.
// Tested by tests/browser.
'use strict';

(() => {
  // Trees with more nodes start collapsed, and longer queries are shown without colours.
  const largeTree = 500;
  const longQuery = 300000;

  const model = JSON.parse(document.getElementById('model').textContent);
  const byId = (id) => document.getElementById(id);

  const make = (tag, properties = {}, ...children) => {
    const element = Object.assign(document.createElement(tag), properties);
    element.append(...children);
    return element;
  };

  // The nodes in document order: a node's descendants stand right behind it, so that nothing here walks down the tree.
  const nodes = model.nodes.map(([level, name, step, decidesRow]) => (
    {level, name, step, decidesRow, isAttribute: step.startsWith('/@'), columns: [], isExpanded: false}));

  // Gives each node its parent, its place among the parent's children, and where its descendants end.
  const linkNodes = () => {
    const open = [];  // the ancestors of the node at hand
    const close = (level, end) => { while (open.length > level) nodes[open.pop()].end = end; };
    nodes.forEach((node, index) => {
      close(node.level, index);
      node.parent = open.at(-1) ?? -1;
      node.children = 0;
      node.position = node.parent < 0 ? 1 : ++nodes[node.parent].children;
      open.push(index);
    });
    close(0, nodes.length);
    model.columns.forEach((column) => nodes[column.node].columns.push(column));
  };

  const hasChildren = (index) => nodes[index].children > 0;

  const xpathOf = (index) => {
    const steps = [];
    for (let at = index; at >= 0; at = nodes[at].parent) steps.push(nodes[at].step);
    return steps.reverse().join('');
  };

  const ancestorsOf = (index) => {
    const ancestors = [];
    for (let at = nodes[index].parent; at >= 0; at = nodes[at].parent) ancestors.push(at);
    return ancestors.reverse();
  };

  // The tree: a line for each node whose ancestors are all expanded, of which only those in sight are in the page.

  const tree = byId('tree');
  const lines = byId('lines');
  const lineHeight = 28;  // as in the style
  let shown = [];  // the indexes of the nodes that have a line
  let current = 0;
  let found = -1;  // the node that the search is at

  const typeText = (column) => column.type + (column.maximumLength ? `(${column.maximumLength})` : '');

  const columnText = (column) => {
    const group = column.groupBy ? `, group ${column.groupBy}` : '';
    return `${column.name}: ${typeText(column)}${group}`;
  };

  const nameText = (node) => (node.isAttribute ? '@' : '') + node.name;

  const describeLine = (line, index) => {
    const node = nodes[index];
    line.setAttribute('role', 'treeitem');
    line.setAttribute('aria-level', node.level + 1);
    line.setAttribute('aria-posinset', node.position);
    line.setAttribute('aria-setsize', node.parent < 0 ? 1 : nodes[node.parent].children);
    line.setAttribute('aria-selected', index === current);
    if (hasChildren(index)) line.setAttribute('aria-expanded', node.isExpanded);
  };

  const makeLine = (index) => {
    const node = nodes[index];
    const line = make('div', {id: `node-${index}`, className: 'node'},
      make('span', {className: 'name', textContent: nameText(node)}));
    line.classList.toggle('attribute', node.isAttribute);
    line.classList.toggle('match', index === found);
    if (node.decidesRow) line.append(make('span', {className: 'mark row', textContent: 'row'}));
    line.append(...node.columns.map((column) => make('span', {className: 'mark', textContent: columnText(column)})));
    line.dataset.index = index;
    line.style.setProperty('--level', node.level);
    describeLine(line, index);
    return line;
  };

  const drawLines = () => {
    const first = Math.max(0, Math.floor(tree.scrollTop / lineHeight) - 10);
    const count = Math.ceil(tree.clientHeight / lineHeight) + 20;
    lines.style.paddingTop = `${first * lineHeight}px`;
    lines.replaceChildren(...shown.slice(first, first + count).map(makeLine));
    tree.setAttribute('aria-activedescendant', `node-${current}`);
  };

  const bringIntoSight = (position) => {
    const top = position * lineHeight;
    const lowest = top + lineHeight - tree.clientHeight;
    tree.scrollTop = Math.min(top, Math.max(tree.scrollTop, lowest));
    drawLines();
    lines.querySelector('[aria-selected="true"] .name').scrollIntoView({block: 'nearest', inline: 'nearest'});
  };

  const drawTree = () => {
    shown = [];
    for (let at = 0; at < nodes.length; at = nodes[at].isExpanded ? at + 1 : nodes[at].end) shown.push(at);
    lines.style.height = `${shown.length * lineHeight}px`;
    byId('xpath').textContent = xpathOf(current);
    bringIntoSight(shown.indexOf(current));
  };

  const goTo = (index) => {
    ancestorsOf(index).forEach((at) => { nodes[at].isExpanded = true; });
    current = index;
    drawTree();
  };

  const goToShown = (position) => { if (shown[position] !== undefined) goTo(shown[position]); };

  const setExpanded = (index, isExpanded) => {
    nodes[index].isExpanded = isExpanded && hasChildren(index);
    drawTree();
  };

  const setAllExpanded = (isExpanded) => {
    nodes.forEach((node, index) => { node.isExpanded = isExpanded && hasChildren(index); });
    if (!isExpanded) current = 0;
    drawTree();
  };

  const toggle = (index) => setExpanded(index, !nodes[index].isExpanded);

  const open = () => {
    if (nodes[current].isExpanded) goTo(current + 1);
    else setExpanded(current, true);
  };

  const close = () => {
    if (nodes[current].isExpanded) setExpanded(current, false);
    else if (nodes[current].parent >= 0) goTo(nodes[current].parent);
  };

  const expandSiblings = () => {
    const parent = nodes[current].parent;
    const end = parent < 0 ? nodes.length : nodes[parent].end;
    for (let at = parent + 1; at < end; at = nodes[at].end) nodes[at].isExpanded = hasChildren(at);
    drawTree();
  };

  const linesInSight = () => Math.max(1, Math.floor(tree.clientHeight / lineHeight) - 1);

  const move = (by) => goToShown(Math.min(shown.length - 1, Math.max(0, shown.indexOf(current) + by)));

  const keys = {
    ArrowDown: () => move(1),
    ArrowUp: () => move(-1),
    PageDown: () => move(linesInSight()),
    PageUp: () => move(-linesInSight()),
    ArrowRight: open,
    ArrowLeft: close,
    Home: () => goToShown(0),
    End: () => goToShown(shown.length - 1),
    Enter: () => toggle(current),
    ' ': () => toggle(current),
    '*': expandSiblings,
  };

  // Typing a letter goes to the next line whose name begins with it.
  const goToLetter = (letter) => {
    const behind = shown.filter((index) => index > current);
    const next = behind.concat(shown).find((index) => nodes[index].name.toLowerCase().startsWith(letter));
    if (next !== undefined) goTo(next);
  };

  const onTreeKey = (event) => {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    const isLetter = event.key.length === 1 && event.key !== '/';
    const action = keys[event.key] ?? (isLetter && (() => goToLetter(event.key.toLowerCase())));
    if (!action) return;
    event.preventDefault();
    action();
  };

  const onTreeClick = (event) => {
    const line = event.target.closest('.node');
    if (!line) return;
    current = Number(line.dataset.index);
    toggle(current);
  };

  const startTree = () => {
    current = Math.max(0, nodes.findIndex((node) => node.decidesRow));
    const lineCount = ancestorsOf(current).reduce((sum, at) => sum + nodes[at].children, 0);
    if (lineCount > largeTree) current = 0;
    nodes.forEach((node, index) => { node.isExpanded = nodes.length <= largeTree && hasChildren(index); });
    goTo(current);
  };

  // The search.

  const search = byId('search');
  let matches = [];
  let match = 0;

  const showMatch = (position) => {
    match = position;
    found = matches[match];
    goTo(found);
    byId('matches').textContent = `${match + 1} of ${matches.length}`;
  };

  const find = () => {
    const wanted = search.value.trim().toLowerCase();
    const isMatch = (node) => wanted && nameText(node).toLowerCase().includes(wanted);
    matches = [...nodes.keys()].filter((index) => isMatch(nodes[index]));
    found = -1;
    byId('matches').textContent = wanted ? 'no match' : '';
    if (matches.length) showMatch(0);
    else drawLines();
  };

  const leaveSearch = () => {
    search.value = '';
    find();
    tree.focus();
  };

  const onSearchKey = (event) => {
    if (event.key === 'Escape') leaveSearch();
    if (event.key === 'ArrowDown') tree.focus();
    if (event.key === 'Enter' && matches.length) {
      showMatch((match + (event.shiftKey ? matches.length - 1 : 1)) % matches.length);
    }
    if (['Escape', 'ArrowDown', 'Enter'].includes(event.key)) event.preventDefault();
  };

  const onPageKey = (event) => {
    if (event.key !== '/' || event.target === search || event.ctrlKey || event.altKey || event.metaKey) return;
    event.preventDefault();
    search.focus();
    search.select();
  };

  // Copying.

  let statusTimer = 0;

  const say = (text) => {
    byId('status').textContent = text;
    clearTimeout(statusTimer);
    statusTimer = setTimeout(() => { byId('status').textContent = ''; }, 2500);
  };

  // Browsers give the clipboard to secure pages only; elsewhere a selected field does.
  const copyBySelection = (text) => {
    const field = make('textarea', {value: text});
    document.body.append(field);
    field.select();
    const isCopied = document.execCommand('copy');
    field.remove();
    return isCopied;
  };

  const copy = async (text, what) => {
    const isCopied = await (navigator.clipboard?.writeText(text) ?? Promise.reject()).then(
      () => true, () => copyBySelection(text));
    say(isCopied ? `${what} copied` : `${what} could not be copied`);
  };

  // The columns.

  const properties = [
    ['XPath', 'code', (column) => column.xpath],
    ['Kind', '', (column) => column.kind],
    ['Type', '', typeText],
    ['Group', '', (column) => column.groupBy || ''],
    ['Format', '', (column) => column.format],
    ['Informat', '', (column) => column.informat],
    ['Default', 'long', (column) => column.default],
    ['Valid values', 'long', (column) => column.validValues.join(', ')],
  ];

  const columnLine = (column, shown) => {
    const name = make('button', {type: 'button', className: 'link', textContent: column.name});
    name.addEventListener('click', () => {
      goTo(column.node);
      tree.focus();
    });
    return make('tr', {}, make('th', {scope: 'row'}, name),
      ...shown.map(([, className, value]) => make('td', {className, textContent: value(column)})));
  };

  // A property that no column has takes no place.
  const drawColumns = () => {
    const shown = properties.filter(([, , value]) => model.columns.some((column) => value(column) !== ''));
    const titles = ['Name', ...shown.map(([title]) => title)];
    const table = make('table', {},
      make('thead', {}, make('tr', {}, ...titles.map((title) => make('th', {scope: 'col', textContent: title})))),
      make('tbody', {}, ...model.columns.map((column) => columnLine(column, shown))));
    const empty = make('p', {className: 'empty', textContent: 'No columns are selected.'});
    byId('columns').append(model.columns.length ? table : empty);
  };

  // The queries, with colours.

  const keywords = 'xquery version declare variable function namespace default element attribute option external import '
    + 'boundary-space preserve strip as for let in at where order group by return if then else some every satisfies '
    + 'instance of treat cast castable and or not eq ne lt le gt ge to div mod union except intersect stable ascending '
    + 'descending document text comment processing-instruction empty-sequence encoding construction collation';

  const tokens = new RegExp([
    String.raw`(?<comment>\(:[^]*?:\))`,
    String.raw`(?<string>"(?:[^"]|"")*"|'(?:[^']|'')*')`,
    String.raw`(?<tag></?[\p{L}_][\p{L}\p{N}_.:-]*(?:/?>)?|/?>(?=[<{\n]|$))`,
    String.raw`(?<variable>\$[\p{L}_][\p{L}\p{N}_.:-]*)`,
    String.raw`(?<function>(?<![\p{L}\p{N}_.$@/:-])[\p{L}_][\p{L}\p{N}_.-]*:?[\p{L}\p{N}_.-]*(?=\())`,
    String.raw`(?<keyword>(?<![\p{L}\p{N}_.$@/:-])(?:${keywords.split(' ').join('|')})(?![\p{L}\p{N}_.:-]))`,
    String.raw`(?<number>(?<![\p{L}\p{N}_.:-])\d+(?:\.\d+)?)`,
  ].join('|'), 'gu');

  const colouredParts = (text) => {
    const parts = [];
    let position = 0;
    for (const token of text.matchAll(tokens)) {
      const [className] = Object.entries(token.groups).find(([, value]) => value !== undefined);
      parts.push(text.slice(position, token.index), make('span', {className, textContent: token[0]}));
      position = token.index + token[0].length;
    }
    parts.push(text.slice(position));
    return parts;
  };

  const drawQuery = (section, title, query) => {
    if (query.problem !== undefined) {
      return section.append(make('p', {className: 'card problem', textContent: query.problem}));
    }
    const button = make('button', {type: 'button', textContent: 'Copy query'});
    button.setAttribute('aria-label', `Copy query: ${title}`);
    button.addEventListener('click', () => copy(query.text, 'Query'));
    section.querySelector('.bar').append(button);
    const code = make('code');
    if (query.text.length > longQuery) code.textContent = query.text;
    else colouredParts(query.text).forEach((part) => code.append(part));
    const text = make('pre', {className: 'card', tabIndex: 0}, code);
    text.setAttribute('role', 'region');
    text.setAttribute('aria-label', title);
    section.append(text);
  };

  const count = (number, what) => `${number.toLocaleString('en')} ${what}${number === 1 ? '' : 's'}`;

  const drawHeader = () => {
    const attributes = nodes.filter((node) => node.isAttribute).length;
    const row = nodes.findIndex((node) => node.decidesRow);
    document.title = `${model.title} - model`;
    byId('title').textContent = model.title;
    byId('summary').textContent = [count(nodes.length - attributes, 'element'), count(attributes, 'attribute'),
      count(model.columns.length, 'column'), row < 0 ? 'no element decides the row' : `row: ${nodes[row].name}`].join(' · ');
  };

  const listen = () => {
    tree.addEventListener('keydown', onTreeKey);
    tree.addEventListener('click', onTreeClick);
    tree.addEventListener('scroll', drawLines);
    window.addEventListener('resize', drawLines);
    search.addEventListener('input', find);
    search.addEventListener('keydown', onSearchKey);
    document.addEventListener('keydown', onPageKey);
    byId('expand-all').addEventListener('click', () => setAllExpanded(true));
    byId('collapse-all').addEventListener('click', () => setAllExpanded(false));
    byId('copy-xpath').addEventListener('click', () => copy(xpathOf(current), 'XPath'));
  };

  linkNodes();
  drawHeader();
  startTree();
  drawColumns();
  drawQuery(byId('to-rows'), 'XML to rows', model.toRows);
  drawQuery(byId('from-rows'), 'Rows to XML', model.fromRows);
  listen();
})();
