SELECT d,
       c-d,
       c,
       (SELECT count(*) FROM t2 AS x WHERE x.b<t1.b),
     ~ CASE WHEN c>(SELECT avg(c) FROM t1) THEN a*2 ELSE b*10 END,
       a-b
  FROM t1