%chk=mol.chk
#p b3lyp/6-31g* force

Ab and Ba at mirror places

0 1
   Ab               0.00000000    0.00000000   -1.79900000
   O                0.00000000    0.00000000    0.00000000
   Ba               0.00000000    0.00000000    1.80000000


