%chk=mol.chk
#p b3lyp/6-31g* force

far outside of it

0 1
   He           ******************************************
   Ne               0.00000000   -0.00000000    0.00000000


