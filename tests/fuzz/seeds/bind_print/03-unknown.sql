SELECT z.a, zz.b, s.v.x, Vee.x, w.* FROM zz z, Vee, w WHERE x BETWEEN :a AND :b OR "Mixed Case" LIKE :c
