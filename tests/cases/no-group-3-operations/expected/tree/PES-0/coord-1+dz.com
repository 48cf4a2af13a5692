%chk=mol.chk
#p b3lyp/6-31g* force

E, Szx and Syz within the tolerance, C2z not

0 1
   He               0.00040000    0.00040000    1.00100000


