SELECT a.x, t.k, u.x, y FROM t a JOIN u ON u.k = a.k WHERE a.y = :p AND u.x IN (1, :q)
