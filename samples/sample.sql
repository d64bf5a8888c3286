SELECT c.CustomerId, c.FirstName || ' ' || c.LastName AS CustomerName,
       COUNT(i.InvoiceId) AS Invoices, SUM(i.Total) AS Spent
FROM Customer c
     INNER JOIN Invoice i ON i.CustomerId = c.CustomerId
WHERE c.Country IN ('Germany', 'France') AND i.InvoiceDate >= '2010-01-01'
GROUP BY c.CustomerId, c.FirstName, c.LastName
HAVING SUM(i.Total) > 10
ORDER BY Spent DESC
