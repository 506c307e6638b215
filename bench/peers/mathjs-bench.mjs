// Times math.js on the same unique lines as PeerBench (start-up excluded): the corpus from
// scratch, line after line in one scope, every answer formatted. Prints ns per line.
import { readFileSync } from 'node:fs';
import { create, all } from 'mathjs';

const math = create(all);
const path = process.argv[2] ?? '../../build/peers/corpus.tsv';
const rows = readFileSync(path, 'utf8').split('\n').filter((l) => l && !l.startsWith('#'));
const lines = rows.map((row) => row.split('\t'));

function medianNanoseconds(body, rounds) {
  const times = [];
  for (let round = 0; round < rounds; round++) {
    const start = process.hrtime.bigint();
    body();
    times.push(Number(process.hrtime.bigint() - start));
  }
  times.sort((a, b) => a - b);
  return times[Math.floor(times.length / 2)];
}

let answered = 0;
const ns = medianNanoseconds(() => {
  answered = 0;
  const scope = new Map();
  for (const [kind, , , expression] of lines) {
    if (kind === 'blank') continue;
    try {
      math.format(math.evaluate(expression, scope), { precision: 13 });
      answered++;
    } catch (error) {
      // counted as not answered
    }
  }
}, 7);
console.log('tool\tns_per_line\tanswered\tlines');
console.log(`mathjs\t${Math.round(ns / lines.length)}\t${answered}\t${lines.length}`);
