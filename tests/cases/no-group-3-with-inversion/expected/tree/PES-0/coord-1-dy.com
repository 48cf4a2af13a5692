%chk=mol.chk
#p b3lyp/6-31g* force

E, I and Sxy within the tolerance, C2z not

0 1
   H                1.00000000    0.49900000    0.00040000
   H               -1.00000000   -0.49930000   -0.00040000


