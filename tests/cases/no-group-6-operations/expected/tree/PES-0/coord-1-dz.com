%chk=mol.chk
#p b3lyp/6-31g* force

all but C2z and I

0 1
   He               0.00040000    0.00020000   -0.00140000


