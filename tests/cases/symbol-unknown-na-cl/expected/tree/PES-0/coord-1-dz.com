%chk=mol.chk
#p b3lyp/6-31g* force

NA and CL at mirror places

0 1
   NA               0.00000000    0.00000000   -1.80100000
   O                0.00000000    0.00000000    0.00000000
   CL               0.00000000    0.00000000    1.80000000


