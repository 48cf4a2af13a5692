%chk=mol.chk
#p b3lyp/6-31g* force

helium anywhere

0 1
   He               1.50000000   -2.49900000    0.50000000


