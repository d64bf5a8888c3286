SELECT a FROM t WHERE (((((((((SELECT e5, c8, b5 + 919 + c2, a7 + a((((((((((
(((((((((SELECT e5, c8, b5 + 919 + c2, a7 + a((((((((((
(((((((((SELECT e5, c8, b5 + 919 + c2, a7 + a((((((((((
(((((((((SELECT e5, c8, b5 + 919 + c2, a7 + a((((((((((
(((((((((SELECT e5, c8, b5 + 919 + c2, a7 + a((((((((((
(((((((((SELECT e5, c8, b5 + 919 + c2, a7 + a((((((((((
