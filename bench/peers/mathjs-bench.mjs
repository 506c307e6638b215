// Times math.js on the same lines as PeerBench (start-up excluded); prints ns per line.
import { readFileSync } from 'node:fs';
import { create, all } from 'mathjs';

const math = create(all);
const path = process.argv[2] ?? 'bench/peers/lines.tsv';
const lines = readFileSync(path, 'utf8').split('\n').filter((l) => l && !l.startsWith('#'));
const scope = { price: 1200, qty: 35 };

function nanosecondsPerCall(body, calls) {
  const rounds = [];
  for (let round = 0; round < 7; round++) {
    const start = process.hrtime.bigint();
    for (let i = 0; i < calls; i++) body();
    rounds.push(Number(process.hrtime.bigint() - start) / calls);
  }
  rounds.sort((a, b) => a - b);
  return rounds[Math.floor(rounds.length / 2)];
}

console.log('kind\tline\tmathjs_ns\tmathjs_answer');
for (const row of lines) {
  const [kind, lumo, , expression] = row.split('\t');
  let answer = '';
  const ns = nanosecondsPerCall(() => {
    try {
      answer = math.format(math.evaluate(expression, scope), { precision: 13 });
    } catch (error) {
      answer = 'error: ' + error.message;
    }
  }, 2000);
  console.log(`${kind}\t${lumo}\t${Math.round(ns)}\t${answer}`);
}
