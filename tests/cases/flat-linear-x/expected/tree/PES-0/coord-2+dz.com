%chk=mol.chk
#p b3lyp/6-31g* force

almost on the x axis

0 1
   C               -0.00000010   -0.00000010   -0.64480000
   O                0.00000010   -0.00000010    0.48460000


