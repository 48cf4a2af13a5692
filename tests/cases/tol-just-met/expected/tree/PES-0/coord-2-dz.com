%chk=mol.chk
#p b3lyp/6-31g* force

the oxygen image is exactly the tolerance away

0 1
   O               -0.25000000    0.50000000    0.00050000
   H                0.75000000    1.50000000   -0.00100000


