// What `velm-m3u stats` does, with iptv-playlist-parser: the whole process reads the file, parses
// it and counts the channels, their distinct countries and groups and those without logo, group or
// country. Run as a process of its own, so that start-up, reading and decoding count too.
'use strict';
const fs = require('fs');
const parser = require('iptv-playlist-parser');

const items = parser.parse(fs.readFileSync(process.argv[2], 'utf8')).items;
const countries = new Set();
const groups = new Set();
let withoutLogo = 0;
let withoutGroup = 0;
let withoutCountry = 0;
for (const item of items) {
  if (!item.tvg.logo) withoutLogo++;
  if (item.group.title) groups.add(item.group.title); else withoutGroup++;
  if (item.tvg.country) countries.add(item.tvg.country); else withoutCountry++;
}
process.stdout.write(`Entries:            ${items.length}\n` +
  `Distinct countries: ${countries.size}\n` +
  `Distinct groups:    ${groups.size}\n` +
  `Without logo:       ${withoutLogo}\n` +
  `Without group:      ${withoutGroup}\n` +
  `Without country:    ${withoutCountry}\n`);
