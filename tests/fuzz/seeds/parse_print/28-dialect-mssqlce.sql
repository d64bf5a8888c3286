select top (5) * from containstable(t, *, 'x', 5) k where k.[key] = @k except select a from u
