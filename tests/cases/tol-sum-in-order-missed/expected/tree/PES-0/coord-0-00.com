%chk=mol.chk
#p b3lyp/6-31g* force

missed only by x*x + y*y + z*z, summed in this order with each step rounded

0 1
   He               0.00030100    0.00025881   -0.00030400


