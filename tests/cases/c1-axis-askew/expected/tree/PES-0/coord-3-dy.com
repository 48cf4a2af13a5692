%chk=mol.chk
#p b3lyp/6-31g* force

water with its axis along no coordinate axis

0 1
   O                0.00000000   -0.07539900    0.08985700
   H               -0.37860000    0.80393300    0.06208300
   H                0.37860000   -0.20174100   -0.78093900


