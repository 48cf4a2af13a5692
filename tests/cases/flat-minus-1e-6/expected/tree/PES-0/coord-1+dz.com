%chk=mol.chk
#p b3lyp/6-31g* force

flat in x, which no rule looks at

0 1
   O               -0.00000100    0.00000000   -0.11630000
   H                0.00000100    0.75720000    0.46920000
   H               -0.00000100   -0.75720000    0.46920000


