'use strict';
// sql-formatter as a peer: "parse+print" is format (its scan, parse and layout
// of the statement back to text in one call).
const { format } = require('sql-formatter');
const { benchRunnerMain } = require('./bench-runner');

benchRunnerMain({
  tool: 'sql-formatter',
  extraOptions: { language: 'sql' },
  extraUsage: '  --language NAME    language of sql-formatter to use (default sql, standard SQL)\n',
  makeModes: ({ language }) => {
    const opt = { language };
    return [{ name: 'parse+print', work: 'format', run: (sql) => { format(sql, opt); } }];
  },
});
