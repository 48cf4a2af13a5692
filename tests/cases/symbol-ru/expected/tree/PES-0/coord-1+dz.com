%chk=mol.chk
#p b3lyp/6-31g* force

Ru and Ru at mirror places

0 1
   O                0.00000000    0.00000000    0.11830000
   Ru               0.00000000    0.75720000   -0.46920000
   Ru               0.00000000   -0.75720000   -0.46920000


