%chk=mol.chk
#p b3lyp/6-31g* force

CL and BR at mirror places

0 1
   O               -0.11730000    0.00000000    0.00000000
   CL               0.46920000    0.75720000    0.00000000
   BR               0.46920000   -0.75720000    0.00000000


