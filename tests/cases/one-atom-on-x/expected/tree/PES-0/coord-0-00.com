%chk=mol.chk
#p b3lyp/6-31g* force

helium on the x axis

0 1
   He               0.00000000    0.00000000    1.50000000


