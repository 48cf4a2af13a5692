%chk=mol.chk
#p b3lyp/6-31g* force

water, first line
second line of the title

0 1
   O                0.00000000    0.00000000    0.11700000
   H                0.00000000    0.75700000   -0.46900000
   H                0.00000000   -0.75700000   -0.47000000


