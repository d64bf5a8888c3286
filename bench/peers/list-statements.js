'use strict';
// Lists the entries of a statements file as the Node.js runners read them, one
// line each: number, line, UTF-8 bytes, FNV-1a hash of the UTF-8 text (hex).
// The bench tests compare this with the engine's own reading.
const fs = require('fs');
const { decodeText, splitStatementList } = require('./bench-runner');

function fnv1a(bytes) {
  let h = 0x811c9dc5;
  for (const b of bytes) h = Math.imul(h ^ b, 0x01000193) >>> 0;
  return h.toString(16).padStart(8, '0');
}

if (process.argv.length !== 3) {
  process.stderr.write('usage: list-statements.js STATEMENTS\n');
  process.exit(2);
}
const lines = splitStatementList(decodeText(fs.readFileSync(process.argv[2]))).map((e) => {
  const utf8 = Buffer.from(e.text, 'utf8');
  return `${e.index}\t${e.line}\t${utf8.length}\t${fnv1a(utf8)}\n`;
});
process.stdout.write(lines.join(''));
