%chk=mol.chk
#p b3lyp/6-31g* force

three atoms, each within the tolerance of the next

0 1
   He               1.00000000    2.00000000    0.00000000
   He               1.00000000    2.00000000    0.00190000
   He               1.00000000    2.00000000    0.00170000


