%chk=mol.chk
#p b3lyp/6-31g* force

E and the mirrors

0 1
   He               0.00040000   -0.00060000    0.00040000


