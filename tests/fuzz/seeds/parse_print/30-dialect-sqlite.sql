with recursive c(n) as (select 1 union all select n + 1 from c limit 5)
select "a", t."a", [b c], `d`, t.rowid, a == 1 < 2, ~a, !b, a << 2 | b & 3, a || b,
  a notnull, b isnull, c is not null, d is 5, e not glob 'x*', f regexp 'y' escape '\',
  cast(a as timestamp without time zone), char(65), ?1, :n, $x, 0x1f, g in (select 1), h not in (1, 2)
from main.t left join u on t.a = u.a cross join v
where a between 1 and 2 except select 1 intersect select 2
order by a collate nocase desc, b limit 10, 5;
