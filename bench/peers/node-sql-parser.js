'use strict';
// node-sql-parser as a peer: "parse" is astify (text to its AST), "parse+print"
// is astify then sqlify (the AST back to SQL text).
const { Parser } = require('node-sql-parser');
const { benchRunnerMain } = require('./bench-runner');

benchRunnerMain({
  tool: 'node-sql-parser',
  extraOptions: { database: 'PostgresQL' },
  extraUsage: '  --database NAME    grammar of node-sql-parser to use (default PostgresQL)\n',
  makeModes: ({ database }) => {
    const parser = new Parser();
    const opt = { database };
    return [
      { name: 'parse', work: 'astify', run: (sql) => { parser.astify(sql, opt); } },
      { name: 'parse+print', work: 'astify+sqlify', run: (sql) => { parser.sqlify(parser.astify(sql, opt), opt); } },
    ];
  },
});
