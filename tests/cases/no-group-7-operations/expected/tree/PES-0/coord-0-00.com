%chk=mol.chk
#p b3lyp/6-31g* force

all but I

0 1
   He               0.00033000    0.00033000   -0.00033000


