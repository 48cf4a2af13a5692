%chk=mol.chk
#p b3lyp/6-31g* force

E, C2y and the mirrors

0 1
   He              -0.00070000    0.00045000    0.00035000


