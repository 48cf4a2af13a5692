%chk=mol.chk
#p b3lyp/6-31g* force

zeros and their signs, mirror plane x = 0

0 1
   O                0.00000000    1.00000000    0.00000000
   H               -3.00000000    0.00000000   -0.00100000
   F               -0.00000000    5.00000000    0.00000000


