// Measures iptv-playlist-parser the way velm-bench-parse measures ours: the file is read and
// decoded first, then only the parse is timed, and the growth of the process's peak resident
// memory during the parse is divided by the number of channels.
'use strict';
const fs = require('fs');
const parser = require('iptv-playlist-parser');

function kilobytes(field) {
  const match = fs.readFileSync('/proc/self/status', 'utf8').match(new RegExp(field + ':\\s+(\\d+)'));
  return match ? Number(match[1]) : -1;
}

const path = process.argv[2];
const bytes = fs.statSync(path).size;
const text = fs.readFileSync(path, 'utf8');
if (global.gc) global.gc();
fs.writeFileSync('/proc/self/clear_refs', '5');
const before = kilobytes('VmRSS');
const start = process.hrtime.bigint();
const result = parser.parse(text);
const seconds = Number(process.hrtime.bigint() - start) / 1e9;
const peak = kilobytes('VmHWM');
const entries = result.items.length;
console.log(JSON.stringify({
  parser: 'iptv-playlist-parser',
  bytes,
  entries,
  seconds,
  peakBytesPerEntry: entries ? Number(((peak - before) * 1024 / entries).toFixed(1)) : 0,
}));
