select a -- comment
from /* block
 comment */ t