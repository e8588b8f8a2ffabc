// Parses a programme guide (XMLTV, plain or .gz) with one of the npm parsers, as an application
// on node would, and prints the channels and programmes it found:
//   node guide.js epg-parser|iptv-xmltv FILE
const fs = require('fs');
const zlib = require('zlib');

const [which, file] = process.argv.slice(2);
let bytes = fs.readFileSync(file);
if (bytes[0] === 0x1f && bytes[1] === 0x8b)
    bytes = zlib.gunzipSync(bytes);
const text = bytes.toString('utf8');
let result;
if (which === 'epg-parser') {
    const parsed = require('epg-parser').parse(text);
    result = { channels: parsed.channels.length, programmes: parsed.programs.length };
} else if (which === 'iptv-xmltv') {
    const parsed = require('@iptv/xmltv').parseXmltv(text);
    result = { channels: parsed.channels.length, programmes: parsed.programmes.length };
} else {
    console.error('usage: node guide.js epg-parser|iptv-xmltv FILE');
    process.exit(2);
}
console.log(`Programmes: ${result.programmes}`);
