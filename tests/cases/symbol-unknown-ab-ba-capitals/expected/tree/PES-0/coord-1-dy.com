%chk=mol.chk
#p b3lyp/6-31g* force

AB and BA at mirror places

0 1
   AB               0.00000000   -0.00100000   -1.80000000
   O                0.00000000    0.00000000    0.00000000
   BA               0.00000000    0.00000000    1.80000000


