%chk=mol.chk
#p b3lyp/6-31g* force

met only by x*x + y*y + z*z, summed in this order with each step rounded

0 1
   He               0.00027900   -0.00065300    0.00022749


