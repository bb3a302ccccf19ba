// What check_site.py asks of a page.

// Calls `done` with pictures that did not load, the links, and the places that links may lead to, once all pictures are there
// or are known not to come.
function look(done) {
  const pictures = Array.from(document.images);
  pictures.forEach(picture => { picture.loading = 'eager'; });
  const loaded = picture => picture.complete || new Promise(resolve => { picture.onload = picture.onerror = resolve; });
  Promise.all(pictures.map(loaded)).then(() => done({
    pictures: pictures.filter(picture => picture.naturalWidth === 0).map(picture => picture.src),
    links: Array.from(document.querySelectorAll('a[href]'), a => a.href),
    anchors: Array.from(document.querySelectorAll('[id], a[name]'), e => e.id || e.name),
  }));
}

function isInScrollingBox(element) {
  for (let e = element; e; e = e.parentElement) {
    if (/auto|scroll|hidden/.test(getComputedStyle(e).overflowX)) return true;
  }
  return false;
}

// What is wider than `width`; null where the page fits.
function tooWide(width) {
  const reached = document.scrollingElement.scrollWidth;
  if (reached <= width + 1) return null;
  const wide = Array.from(document.querySelectorAll('article *, pre, table'))
    .filter(e => e.getBoundingClientRect().right > width + 1 && !isInScrollingBox(e));
  return `${reached} pixels: ` + wide.slice(0, 2).map(e => `${e.tagName} ${e.textContent.trim().slice(0, 40)}`).join('; ');
}

// Red, green, blue from 0 to 255, and opacity.
function colour(text) {
  const numbers = text.match(/[\d.]+/g).map(Number);
  return numbers.length < 4 ? [...numbers, 1] : numbers;
}

// Relative luminance as WCAG 2 defines it.
function luminance(rgb) {
  const [r, g, b] = rgb.slice(0, 3).map(v => v / 255).map(v => v <= 0.03928 ? v / 12.92 : ((v + 0.055) / 1.055) ** 2.4);
  return 0.2126 * r + 0.7152 * g + 0.0722 * b;
}

// What an element stands on.
function ground(element) {
  for (let e = element; e; e = e.parentElement) {
    const own = colour(getComputedStyle(e).backgroundColor);
    if (own[3] > 0.5) return own;
  }
  return [255, 255, 255, 1];
}

function contrast(element) {
  const below = ground(element), own = colour(getComputedStyle(element).color);
  const seen = luminance(own.slice(0, 3).map((v, i) => v * own[3] + below[i] * (1 - own[3])));
  const behind = luminance(below);
  return (Math.max(seen, behind) + 0.05) / (Math.min(seen, behind) + 0.05);
}

// Text of a contrast below `least`, and whether the ground is light where it must be dark.
function faint(least, mustBeDark) {
  const article = document.querySelector('article') || document.body;
  const found = mustBeDark && luminance(ground(article)) > 0.2 ? ['the ground is not dark'] : [];
  const walker = document.createTreeWalker(article, NodeFilter.SHOW_TEXT);
  while (walker.nextNode()) {
    const e = walker.currentNode.parentElement;
    if (!walker.currentNode.textContent.trim() || !e.checkVisibility()) continue;
    if (e.closest('.headerlink, svg, script, style, button')) continue;
    if (contrast(e) < least) found.push(`contrast ${contrast(e).toFixed(1)}: ${e.textContent.trim().slice(0, 40)}`);
  }
  return found.slice(0, 3);
}

// Addresses of what the search has found; null while it is searching.
function found() {
  const summary = document.querySelector('#search-results .search-summary');
  if (!summary || !/\d/.test(summary.textContent)) return null;
  return Array.from(document.querySelectorAll('#search-results ul.search a'), a => a.href);
}
