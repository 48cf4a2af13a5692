%chk=mol.chk
#p b3lyp/6-31g* force

Be and be at mirror places

0 1
   O                0.00000000    0.00000000    0.11730000
   Be               0.00000000    0.75720000   -0.46920000
   be               0.00000000   -0.75720000   -0.46920000


