%chk=mol.chk
#p b3lyp/6-31g* force

the default step is a shade above 0.001

0 1
   H                0.00000000    1.00000000    2.00000000
   F                0.50000000    0.25000000    0.12500000


