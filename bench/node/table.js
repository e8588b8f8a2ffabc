// Reads the JSON lines of both parsers (three runs of each per file) and prints a Markdown table:
// the median time of each, throughput, memory, and our advantage as ratios.
'use strict';
const lines = require('fs').readFileSync(0, 'utf8').split('\n').filter(Boolean).map(JSON.parse);
const median = (xs) => xs.slice().sort((a, b) => a - b)[Math.floor(xs.length / 2)];
const runs = new Map();
for (const run of lines) {
  const key = `${run.parser}|${run.file}`;
  if (!runs.has(key)) runs.set(key, []);
  runs.get(key).push(run);
}
const summary = (parser, file) => {
  const all = runs.get(`${parser}|${file}`);
  const seconds = median(all.map((r) => r.seconds));
  return {
    entries: all[0].entries,
    mb: all[0].bytes / 1e6,
    seconds,
    mbPerSecond: all[0].bytes / 1e6 / seconds,
    entriesPerSecond: all[0].entries / seconds,
    bytesPerEntry: median(all.map((r) => r.peakBytesPerEntry)),
  };
};
const files = [...new Set(lines.map((r) => r.file))];
const fmt = (x, digits = 0) => x.toLocaleString('en-US', { maximumFractionDigits: digits, minimumFractionDigits: digits });
console.log('| file | entries | MB | ours MB/s | npm MB/s | throughput ratio | ours entries/s | npm entries/s | ours peak B/entry | npm peak B/entry | memory ratio |');
console.log('|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|');
for (const file of files) {
  const ours = summary('velm', file);
  const peer = summary('iptv-playlist-parser', file);
  console.log(`| ${file} | ${fmt(ours.entries)} | ${fmt(ours.mb, 1)} | ${fmt(ours.mbPerSecond, 1)} | ${fmt(peer.mbPerSecond, 1)} | ` +
    `${fmt(ours.mbPerSecond / peer.mbPerSecond, 1)}× | ${fmt(ours.entriesPerSecond)} | ${fmt(peer.entriesPerSecond)} | ` +
    `${fmt(ours.bytesPerEntry)} | ${fmt(peer.bytesPerEntry)} | ${fmt(peer.bytesPerEntry / ours.bytesPerEntry, 1)}× less |`);
}
