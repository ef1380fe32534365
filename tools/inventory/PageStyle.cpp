#include "inventory/Page.h"

namespace orvel::tools {

const char* const pageStyle = R"css(
:root {
    --ground: #f4f5f7; --surface: #ffffff; --ink: #1c2127; --quiet: #5c6773; --line: #e2e6eb;
    --soft: #f0f2f5; --accent: #3459c7; --board: #7d97e6; --shared: #b9c6ee; --reserved: #8a93a3;
    --good: #17663c; --good-ground: #e0f2e7; --bad: #9b2020; --bad-ground: #fbe5e3; --shade: 0 1px 2px rgb(20 30 50 / 6%);
}
@media (prefers-color-scheme: dark) {
    :root {
        --ground: #101317; --surface: #181c22; --ink: #e7eaee; --quiet: #99a4b0; --line: #2a313a;
        --soft: #20262e; --accent: #7fa2ff; --board: #5371c4; --shared: #34467c; --reserved: #66707f;
        --good: #86dba8; --good-ground: #14301f; --bad: #ffaca4; --bad-ground: #3d1a19; --shade: none;
    }
}
* { box-sizing: border-box; }
html { -webkit-text-size-adjust: 100%; }
body {
    margin: 0 auto; padding: 2.5rem 1.5rem 3rem; max-width: 68rem; background: var(--ground); color: var(--ink);
    font: 1rem/1.5 system-ui, "Segoe UI", Roboto, "Helvetica Neue", "DejaVu Sans", sans-serif; overflow-wrap: anywhere;
}
h1, h2, h3, p, ul, dl, dd { margin: 0; padding: 0; }
ul { list-style: none; }
h1 { font-size: 2rem; line-height: 1.2; font-weight: 650; letter-spacing: -0.015em; }
h2 { font-size: 1.3rem; line-height: 1.3; font-weight: 650; letter-spacing: -0.01em; unicode-bidi: isolate; }
h3 { margin-bottom: 0.75rem; font-size: 0.8125rem; font-weight: 600; color: var(--quiet); }
code { font: 0.8125rem/1.4 ui-monospace, "Cascadia Mono", Consolas, "DejaVu Sans Mono", monospace; }
dd, td, li { unicode-bidi: isolate; }
.quiet, .kind { color: var(--quiet); }
.eyebrow { color: var(--accent); font-weight: 600; font-size: 0.875rem; }
.dot { padding: 0 0.25rem; }
.top { padding: 0 0.25rem 1.75rem; }
.top h1 { margin: 0.25rem 0 0.5rem; }
.card {
    margin-bottom: 1.5rem; padding: 1.75rem; background: var(--surface); border: 1px solid var(--line);
    border-radius: 0.75rem; box-shadow: var(--shade);
}
.card-head { display: flex; gap: 1rem; justify-content: space-between; align-items: flex-start; margin-bottom: 1.5rem; }
.card-head > div { min-width: 0; }
.pill {
    flex: none; padding: 0.125rem 0.625rem; border-radius: 1rem; font-size: 0.8125rem; font-weight: 600;
    background: var(--soft); color: var(--quiet); white-space: nowrap;
}
.pill.good { background: var(--good-ground); color: var(--good); }
.pill.bad { background: var(--bad-ground); color: var(--bad); }
.columns { display: grid; gap: 1.75rem 3rem; grid-template-columns: minmax(0, 1fr); }
.columns section + section { margin-top: 1.75rem; }
.wide { margin-top: 1.75rem; padding-top: 1.5rem; border-top: 1px solid var(--line); }
.memory { display: grid; gap: 1rem; }
.memory-row { display: grid; grid-template-columns: 1fr auto; gap: 0.375rem 1rem; }
.memory-row dd { font-weight: 600; font-variant-numeric: tabular-nums; }
.track { grid-column: 1 / -1; height: 0.5rem; border-radius: 0.25rem; background: var(--soft); overflow: hidden; }
.fill { display: block; height: 100%; border-radius: 0.25rem; background: var(--accent); }
.fill.board { background: var(--board); }
.fill.shared { background: var(--shared); }
.fill.reserved { background: var(--reserved); }
.displays { display: grid; gap: 0.75rem; }
.displays li { display: flex; gap: 0.875rem; align-items: center; }
.screen { flex: none; width: 2.5rem; max-height: 2.5rem; border: 2px solid var(--quiet); border-radius: 0.1875rem; }
.details > div { display: grid; grid-template-columns: 9.5rem minmax(0, 1fr); gap: 0 1rem; padding: 0.375rem 0; }
.details > div + div { border-top: 1px solid var(--line); }
.details dt { color: var(--quiet); }
.missing { display: grid; gap: 0.875rem; }
.names { margin-top: 0.25rem; line-height: 1.75; }
.names code { padding: 0.0625rem 0.375rem; border-radius: 0.25rem; background: var(--soft); color: var(--quiet); }
.note { margin-bottom: 0.75rem; }
table { width: 100%; border-collapse: collapse; margin-bottom: 0.75rem; font-size: 0.9375rem; }
th, td { padding: 0.5rem 1rem 0.5rem 0; text-align: left; vertical-align: top; border-bottom: 1px solid var(--line); font-weight: 400; }
thead th { color: var(--quiet); font-size: 0.8125rem; }
td strong { font-weight: 600; }
.sources { display: grid; gap: 0.625rem; margin-top: 1rem; }
.sources li { display: flex; flex-wrap: wrap; gap: 0.125rem 0.75rem; align-items: baseline; }
.sources .pill { min-width: 6.25rem; text-align: center; }
.sources strong { font-weight: 600; }
.alerts {
    margin-bottom: 1.5rem; padding: 1rem 1.25rem; border-radius: 0.75rem; background: var(--bad-ground); color: var(--bad);
    font-weight: 500;
}
@media (min-width: 56rem) {
    .columns { grid-template-columns: minmax(0, 5fr) minmax(0, 7fr); }
    .record th:first-child { width: 24%; }
    .record td { width: 17%; }
    .record td:last-child { width: 42%; padding-right: 0; color: var(--quiet); }
}
@media (max-width: 44rem) {
    body { padding: 1.5rem 0.875rem 2rem; }
    h1 { font-size: 1.625rem; }
    .card { padding: 1.125rem; }
    .card-head { flex-direction: column; gap: 0.625rem; }
    .details > div { grid-template-columns: minmax(0, 1fr); }
    .details dt { font-size: 0.8125rem; }
    .record thead { display: none; }
    .record, .record tbody, .record tr, .record th, .record td { display: block; }
    .record tr { padding: 0.75rem 0; border-bottom: 1px solid var(--line); }
    .record th, .record td { padding: 0.125rem 0; border: 0; }
    .record td::before { content: attr(data-label) "  "; color: var(--quiet); font-size: 0.8125rem; }
}
@media print {
    body { max-width: none; padding: 0; background: none; }
    .card { break-inside: avoid-page; box-shadow: none; }
}
)css";

} // namespace orvel::tools
