%chk=mol.chk
#p b3lyp/6-31g* force

helium at the origin

0 1
   He              -0.00100000    0.00000000    0.00000000


