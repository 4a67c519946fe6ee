#include <ks_graph/GraphHelpCss.h>

namespace kestrel::graph
{

// Sizes are in em and rem throughout: the page follows the reader's text size. Colours are named once, light
// first, and named again for a dark desktop.
constexpr std::string_view graphHelpCss = R"css(
:root {
  color-scheme: light dark;
  --text: #1f2328;
  --quiet: #59636e;
  --page: #ffffff;
  --raised: #f3f5f7;
  --line: #d1d9e0;
  --accent: #0b5cad;
  --mark: #fff3b8;
  --note: #0b5cad;
  --warning: #9a6700;
}

@media (prefers-color-scheme: dark) {
  :root {
    --text: #e3e8ee;
    --quiet: #9aa6b2;
    --page: #1c1f24;
    --raised: #272b32;
    --line: #3d444d;
    --accent: #78b4f4;
    --mark: #5c4a00;
    --note: #78b4f4;
    --warning: #e3b341;
  }
}

*, *::before, *::after {
  box-sizing: border-box;
}

html {
  background: var(--page);
  color: var(--text);
  font-size: 100%;
  -webkit-text-size-adjust: 100%;
  text-size-adjust: 100%;
}

body {
  margin: 0 auto;
  padding: 0 1.5rem;
  max-width: 48rem;
  background: var(--page);
  color: var(--text);
  font-family: system-ui, -apple-system, "Segoe UI", Roboto, "Noto Sans", "DejaVu Sans", Arial, sans-serif;
  font-size: 0.9375rem;
  line-height: 1.55;
  overflow-wrap: break-word;
}

body > :first-child, body > p:empty:first-child + * {
  margin-top: 0;
}

body > :last-child {
  margin-bottom: 0;
}

/* Headings */

h1, h2, h3, h4, h5, h6 {
  margin: 1.6em 0 0.5em;
  line-height: 1.25;
  font-weight: 600;
  break-after: avoid;
}

h1 {
  font-size: 1.6rem;
  padding-bottom: 0.3em;
  border-bottom: 1px solid var(--line);
}

h2 {
  font-size: 1.3rem;
  padding-bottom: 0.25em;
  border-bottom: 1px solid var(--line);
}

h3 {
  font-size: 1.1rem;
}

h4 {
  font-size: 1rem;
}

h5, h6 {
  font-size: 0.9rem;
  color: var(--quiet);
}

h1 + h2, h2 + h3, h3 + h4 {
  margin-top: 0.6em;
}

/* Running text */

p {
  margin: 0 0 0.8em;
}

p:empty {
  display: none;
}

a {
  color: var(--accent);
  text-decoration: underline;
  text-underline-offset: 0.15em;
}

a:hover {
  text-decoration-thickness: 2px;
}

a:focus-visible {
  outline: 2px solid var(--accent);
  outline-offset: 2px;
  border-radius: 2px;
}

b, strong {
  font-weight: 600;
}

small {
  font-size: 0.85em;
  color: var(--quiet);
}

mark {
  background: var(--mark);
  color: inherit;
  padding: 0 0.15em;
  border-radius: 2px;
}

sub, sup {
  font-size: 0.75em;
  line-height: 0;
}

abbr[title] {
  text-decoration: underline dotted;
  cursor: help;
}

hr {
  height: 1px;
  margin: 1.6em 0;
  border: 0;
  background: var(--line);
}

blockquote {
  margin: 1em 0;
  padding: 0.1em 1em;
  border-left: 0.25rem solid var(--line);
  color: var(--quiet);
}

blockquote > :last-child {
  margin-bottom: 0;
}

.note, .warning {
  margin: 1em 0;
  padding: 0.6em 1em;
  border-left: 0.25rem solid var(--note);
  border-radius: 0 4px 4px 0;
  background: var(--raised);
}

.warning {
  border-left-color: var(--warning);
}

/* Lists */

ul, ol {
  margin: 0 0 0.8em;
  padding-left: 1.6em;
}

li + li {
  margin-top: 0.25em;
}

li > ul, li > ol {
  margin: 0.25em 0 0;
}

dl {
  margin: 0 0 0.8em;
}

dt {
  margin-top: 0.6em;
  font-weight: 600;
}

dd {
  margin: 0.1em 0 0 1.6em;
}

/* Code */

code, kbd, samp, pre, tt {
  font-family: ui-monospace, "Cascadia Mono", Consolas, "DejaVu Sans Mono", Menlo, monospace;
  font-size: 0.9em;
}

code, samp, tt {
  padding: 0.1em 0.35em;
  border-radius: 4px;
  background: var(--raised);
}

kbd {
  padding: 0.1em 0.4em;
  border: 1px solid var(--line);
  border-bottom-width: 2px;
  border-radius: 4px;
  background: var(--raised);
}

pre {
  margin: 0 0 1em;
  padding: 0.8em 1em;
  overflow: auto;
  border: 1px solid var(--line);
  border-radius: 6px;
  background: var(--raised);
  line-height: 1.45;
  tab-size: 4;
}

pre code, pre samp {
  padding: 0;
  background: none;
  font-size: inherit;
}

pre p {
  margin: 0;
}

/* Tables: a wide one scrolls by itself, the page does not */

table {
  display: block;
  max-width: 100%;
  overflow-x: auto;
  margin: 0 0 1em;
  border-collapse: collapse;
  font-size: 0.95em;
}

caption {
  margin-bottom: 0.4em;
  color: var(--quiet);
  text-align: left;
}

th, td {
  padding: 0.4em 0.8em;
  border: 1px solid var(--line);
  text-align: left;
  vertical-align: top;
}

th {
  background: var(--raised);
  font-weight: 600;
}

tbody tr:nth-child(even) td {
  background: var(--raised);
}

/* Pictures */

img, svg, video {
  max-width: 100%;
  height: auto;
}

figure {
  margin: 1em 0;
}

figcaption {
  margin-top: 0.4em;
  color: var(--quiet);
  font-size: 0.9em;
}

/* A narrow tool window */

@media (max-width: 30rem) {
  body {
    padding: 0 0.8rem;
    font-size: 0.875rem;
  }
}

/* Paper */

@media print {
  :root {
    --text: #000000;
    --quiet: #444444;
    --page: #ffffff;
    --raised: #ffffff;
    --line: #999999;
    --accent: #000000;
    --mark: #ffffff;
    --note: #444444;
    --warning: #444444;
  }

  body {
    max-width: none;
    padding: 0;
  }

  pre, table, figure {
    break-inside: avoid;
  }
}
)css";

} // namespace kestrel::graph
