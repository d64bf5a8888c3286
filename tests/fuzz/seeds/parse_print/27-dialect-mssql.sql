select top 10 percent with ties a collate latin1_general_ci_as, @@rowcount, n'x', 0x1f, convert(varchar(max), b, 120), sum(a) over (partition by b order by c rows between unbounded preceding and current row)
into #t from db..t x with (nolock, index(ix1)) inner join [u v] y on x.a = y.b
where contains(x.c, 'w') and a !< 1 group by all a with rollup order by a offset 5 rows fetch next 10 rows only compute sum(a) by a for xml path('r'), root('x') option (maxdop 1, optimize for (@p unknown));
go
