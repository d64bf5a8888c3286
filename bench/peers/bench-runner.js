'use strict';
// The common frame of the Node.js peer runners, the twin of
// bench/harness/BenchRunner.cpp: same options, same reading of the statements
// file, same measuring rules, same result line:
//   bench-result tool=T mode=M work=W statements=N accepted=A rejected=R
//                bytes=B seconds=S mb_per_s=X runs=K reps=P

const fs = require('fs');

// --- Reading statement collections (entries separated by lines holding only ";;"),
// exactly as the engine's SplitStatementList does: JavaScript strings are UTF-16
// too, so positions, blanks and trimming agree unit for unit.

function decodeText(bytes) {
  if (bytes.length >= 3 && bytes[0] === 0xef && bytes[1] === 0xbb && bytes[2] === 0xbf) {
    return bytes.subarray(3).toString('utf8');
  }
  if (bytes.length >= 2 && bytes[0] === 0xff && bytes[1] === 0xfe) {
    return bytes.subarray(2).toString('utf16le');
  }
  if (bytes.length >= 2 && bytes[0] === 0xfe && bytes[1] === 0xff) {
    const swapped = Buffer.from(bytes.subarray(2));
    swapped.swap16();
    return swapped.toString('utf16le');
  }
  return bytes.toString('utf8');
}

function isSeparatorLine(line) {
  return /^[ \t]*;;[ \t\r]*$/.test(line);
}

function isBlankText(text) {
  for (let i = 0; i < text.length; i++) {
    if (text.charCodeAt(i) > 0x20) return false;
  }
  return true;
}

function trimLineEnds(text) {
  return text.replace(/^[\r\n]+/, '').replace(/[\r\n]+$/, '');
}

// Entries with their one-based number in the file; blank entries are skipped
// but still counted.
function splitStatementList(text) {
  const entries = [];
  let entryNumber = 1;
  let line = 1;
  let entryLine = 1;
  let entryStart = 0;
  let pos = 0;
  const flush = (end) => {
    const body = text.slice(entryStart, end);
    if (!isBlankText(body)) {
      let first = entryLine;
      for (let k = 0; k < body.length && (body[k] === '\r' || body[k] === '\n'); k++) {
        if (body[k] === '\n') first++;
      }
      entries.push({ index: entryNumber, line: first, text: trimLineEnds(body) });
    }
    entryNumber++;
  };
  while (pos <= text.length) {
    const eol = text.indexOf('\n', pos);
    const lineEnd = eol < 0 ? text.length : eol;
    if (isSeparatorLine(text.slice(pos, lineEnd))) {
      flush(pos);
      entryStart = eol < 0 ? text.length : eol + 1;
      entryLine = line + 1;
    }
    if (eol < 0) break;
    pos = eol + 1;
    line++;
  }
  if (entryStart < text.length) flush(text.length);
  return entries;
}

function readEntryNumbers(path) {
  const numbers = new Set();
  fs.readFileSync(path, 'utf8').split('\n').forEach((raw, i) => {
    const text = raw.trim();
    if (text === '' || text.startsWith('#')) return;
    if (!/^[0-9]+$/.test(text) || Number(text) < 1) {
      throw new Error(`${path}:${i + 1}: entry number needs a whole number of at least 1, not '${text}'`);
    }
    numbers.add(Number(text));
  });
  return numbers;
}

function loadBenchStatements(path, onlyPath) {
  const entries = splitStatementList(decodeText(fs.readFileSync(path)));
  const only = onlyPath ? readEntryNumbers(onlyPath) : null;
  const statements = [];
  for (const e of entries) {
    if (only && !only.delete(e.index)) continue;
    statements.push({ index: e.index, text: e.text, bytes: Buffer.byteLength(e.text, 'utf8') });
  }
  if (only && only.size > 0) {
    throw new Error(`${onlyPath} names entry ${Math.min(...only)}, which ${path} does not hold`);
  }
  return statements;
}

// --- Options.

function usage(program, extra) {
  return `usage: ${program} [options] STATEMENTS
Times the statements of STATEMENTS (entries separated by lines holding only ';;')
and prints one 'bench-result' line per kind of work.
  --runs N           timed runs after the warm-up, the best counts (default 5)
  --budget SECONDS   start no new run after this much timing (default 10; one run at least)
  --min-time SECONDS a run repeats the pass until it lasts this long, and
                     the warm-up lasts as long (default 0.05)
  --only FILE        keep only the entry numbers listed in FILE (one a line)
  --accepted-out FILE  write the entry numbers that every kind of work accepted
  --verbose          name each rejected statement and the reason on standard error
${extra || ''}`;
}

class UsageError extends Error {}

// `extraOptions` maps further option names (without "--") to default values.
function parseBenchArguments(args, extraOptions = {}) {
  const options = {
    statementsPath: '', onlyPath: '', acceptedOutPath: '',
    runs: 5, budgetSeconds: 10, minRunSeconds: 0.05, verbose: false,
    extra: { ...extraOptions },
  };
  const count = (name, text) => {
    if (!/^[0-9]+$/.test(text) || Number(text) < 1 || Number(text) > 1000000) {
      throw new UsageError(`${name} needs a whole number of at least 1, not '${text}'`);
    }
    return Number(text);
  };
  const seconds = (name, text) => {
    const v = Number(text);
    if (text.trim() === '' || !Number.isFinite(v) || v < 0) {
      throw new UsageError(`${name} needs a number of seconds, not '${text}'`);
    }
    return v;
  };
  for (let i = 0; i < args.length; i++) {
    const arg = args[i];
    const value = () => {
      if (i + 1 >= args.length) throw new UsageError(`${arg} needs a value`);
      return args[++i];
    };
    if (arg === '--runs') options.runs = count(arg, value());
    else if (arg === '--budget') options.budgetSeconds = seconds(arg, value());
    else if (arg === '--min-time') options.minRunSeconds = seconds(arg, value());
    else if (arg === '--only') options.onlyPath = value();
    else if (arg === '--accepted-out') options.acceptedOutPath = value();
    else if (arg === '--verbose') options.verbose = true;
    else if (arg.startsWith('--') && Object.prototype.hasOwnProperty.call(extraOptions, arg.slice(2))) {
      options.extra[arg.slice(2)] = value();
    } else if (arg.length > 1 && arg.startsWith('-')) throw new UsageError(`unknown option ${arg}`);
    else if (!options.statementsPath) options.statementsPath = arg;
    else throw new UsageError(`one statements file only, not also '${arg}'`);
  }
  if (!options.statementsPath) throw new UsageError('no statements file given');
  return options;
}

// --- Measuring.

function now() {
  return process.hrtime.bigint();
}

function secondsSince(start) {
  return Number(now() - start) / 1e9;
}

function runPass(mode, statements) {
  let allAccepted = true;
  for (const s of statements) {
    try {
      if (mode.run(s.text) === false) allAccepted = false;
    } catch (e) {
      allAccepted = false;
    }
  }
  return allAccepted;
}

function firstLine(text) {
  return String(text).split(/\r?\n/)[0];
}

// modes: [{ name, work, run(text) }]; run throws (or returns false) to reject.
function runBenchModes(tool, modes, statements, options, log) {
  const results = [];
  const acceptedByAll = statements.map(() => true);
  for (const mode of modes) {
    const result = {
      tool, mode: mode.name, work: mode.work, statements: statements.length,
      accepted: 0, rejected: 0, bytes: 0, seconds: 0, runs: 0, reps: 0,
    };
    // Warm-up: every statement once, which also tells which ones the tool accepts.
    const accepted = [];
    statements.forEach((s, i) => {
      let ok = false;
      let error = 'rejected';
      try {
        ok = mode.run(s.text) !== false;
      } catch (e) {
        error = e && e.message ? e.message : String(e);
      }
      if (ok) {
        accepted.push(s);
        result.bytes += s.bytes;
      } else {
        acceptedByAll[i] = false;
        if (options.verbose) log(`${tool} ${mode.name}: entry ${s.index} rejected: ${firstLine(error)}\n`);
      }
    });
    result.accepted = accepted.length;
    result.rejected = result.statements - result.accepted;

    if (accepted.length > 0) {
      // More passes, for at least the length of one run, finish the warm-up
      // (caches, allocators, the JIT) and size the runs: short passes are
      // repeated so that the clock's resolution does not dominate.
      const probeStart = now();
      let probes = 0;
      do {
        runPass(mode, accepted);
        probes++;
      } while (secondsSince(probeStart) < options.minRunSeconds && probes < 1e6);
      const probe = Math.max(secondsSince(probeStart) / probes, 1e-9);
      result.reps = Math.min(Math.max(Math.ceil(options.minRunSeconds / probe), 1), 1e6);
      let best = 0;
      let spent = 0;
      let consistent = true;
      for (let run = 0; run < options.runs && (run === 0 || spent < options.budgetSeconds); run++) {
        const start = now();
        for (let rep = 0; rep < result.reps; rep++) consistent = runPass(mode, accepted) && consistent;
        const elapsed = secondsSince(start);
        spent += elapsed;
        const perPass = elapsed / result.reps;
        if (run === 0 || perPass < best) best = perPass;
        result.runs++;
      }
      result.seconds = best;
      if (!consistent) log(`${tool} ${mode.name}: a statement accepted in the warm-up failed in a timed run\n`);
    }
    results.push(result);
  }
  if (options.acceptedOutPath) {
    const lines = statements.filter((s, i) => acceptedByAll[i]).map((s) => `${s.index}\n`);
    fs.writeFileSync(options.acceptedOutPath, lines.join(''));
  }
  return results;
}

// Formats like C's "%.9g".
function formatSeconds(value) {
  if (value === 0) return '0';
  const text = value.toPrecision(9);
  if (!/e/.test(text)) return text.includes('.') ? text.replace(/\.?0+$/, '') : text;
  const [mantissa, exponent] = text.split('e');
  const m = mantissa.includes('.') ? mantissa.replace(/\.?0+$/, '') : mantissa;
  const e = Number(exponent);
  return `${m}e${e < 0 ? '-' : '+'}${String(Math.abs(e)).padStart(2, '0')}`;
}

function formatBenchResult(r) {
  const mbPerSecond = r.seconds > 0 ? r.bytes / r.seconds / 1e6 : 0;
  return `bench-result tool=${r.tool} mode=${r.mode} work=${r.work} statements=${r.statements}` +
    ` accepted=${r.accepted} rejected=${r.rejected} bytes=${r.bytes} seconds=${formatSeconds(r.seconds)}` +
    ` mb_per_s=${mbPerSecond.toFixed(3)} runs=${r.runs} reps=${r.reps}`;
}

// The whole main function of a runner. `makeModes(extraOptionValues)` returns the
// modes; `extraOptions` names further options and their defaults; `extraUsage`
// describes them. Sets process.exitCode (0 done, 1 failure, 2 bad arguments).
function benchRunnerMain({ tool, makeModes, extraOptions = {}, extraUsage = '' }) {
  const program = process.argv[1] ? require('path').basename(process.argv[1]) : tool;
  const args = process.argv.slice(2);
  const log = (text) => process.stderr.write(text);
  if (args.includes('--help')) {
    process.stdout.write(usage(program, extraUsage));
    return;
  }
  let options;
  try {
    options = parseBenchArguments(args, extraOptions);
  } catch (e) {
    if (!(e instanceof UsageError)) throw e;
    log(`${program}: ${e.message}\n${usage(program, extraUsage)}`);
    process.exitCode = 2;
    return;
  }
  try {
    const modes = makeModes(options.extra);
    const statements = loadBenchStatements(options.statementsPath, options.onlyPath);
    for (const r of runBenchModes(tool, modes, statements, options, log)) {
      process.stdout.write(`${formatBenchResult(r)}\n`);
    }
  } catch (e) {
    log(`${program}: ${e && e.message ? e.message : e}\n`);
    process.exitCode = 1;
  }
}

module.exports = {
  usage,
  decodeText,
  splitStatementList,
  loadBenchStatements,
  parseBenchArguments,
  runBenchModes,
  formatBenchResult,
  benchRunnerMain,
};
