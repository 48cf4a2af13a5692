%chk=mol.chk
#p b3lyp/6-31g* force

water in the plane x = 1: not centred, so only y = 0 remains

0 1
   O                1.00000000    0.11730000    0.00000000
   H                1.00000000   -0.47020000   -0.75720000
   H                1.00000000   -0.46920000    0.75720000


