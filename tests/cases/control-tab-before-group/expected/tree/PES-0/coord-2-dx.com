%chk=mol.chk
#p b3lyp/6-31g* force

carbon monoxide

0 1
   C                0.00000000    0.00000000   -0.64480000
   O               -0.00100000    0.00000000    0.48360000


