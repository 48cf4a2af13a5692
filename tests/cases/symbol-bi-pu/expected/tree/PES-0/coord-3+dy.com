%chk=mol.chk
#p b3lyp/6-31g* force

Bi and Pu at mirror places

0 1
   Lr              -0.11730000    0.00000000    0.00000000
   Bi               0.46920000    0.75720000    0.00000000
   Pu               0.46920000   -0.75620000    0.00000000


