SELECT q.x, (SELECT MAX(u.k) FROM u WHERE u.x = q.x) FROM (SELECT t.*, 1 AS one FROM t) q WHERE EXISTS (SELECT * FROM s.v WHERE s.v.x = q.k)
