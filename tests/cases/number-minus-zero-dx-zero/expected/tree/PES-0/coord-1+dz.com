%chk=mol.chk
#p b3lyp/6-31g* force

a step of zero

0 1
   He              -0.00000000    0.00000000    1.00000000


