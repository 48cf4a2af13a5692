%chk=mol.chk
#p b3lyp/6-31g* force

the next number above the tolerance

0 1
   O                0.00050000    0.50000000    0.25000000
   H                0.00000000    1.49900000   -0.75000000


