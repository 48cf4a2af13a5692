%chk=mol.chk
#p b3lyp/6-31g* force

cl and Cl at mirror places

0 1
   o                0.00000000    0.00000000    0.11730000
   cl               0.00000000    0.75720000   -0.46820000
   Cl               0.00000000   -0.75720000   -0.46920000


