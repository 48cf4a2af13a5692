%chk=mol.chk
#p b3lyp/6-31g* force

Pm and Pm at mirror places

0 1
   Fm              -0.00100000    0.00000000    0.11730000
   Pm               0.00000000    0.75720000   -0.46920000
   Pm               0.00000000   -0.75720000   -0.46920000


