%chk=mol.chk
#p b3lyp/6-31g* force

E, I and C2y within the tolerance, Szx not

0 1
   H                0.99900000    0.50000000   -0.00060000
   H               -1.00000000   -0.50000000    0.00030000


