%chk=mol.chk
#p b3lyp/6-31g* force

E, C2y, C2x and the mirrors; on the x axis after the first turn

0 1
   He               0.00000000   -0.00150000    0.00000100


