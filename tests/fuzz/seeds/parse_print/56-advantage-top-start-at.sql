select top 10 start at 20 "[1,2]", a from t where d = '2024-01-31' and e in (select b from u) // line comment
