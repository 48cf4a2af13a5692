%chk=mol.chk
#p b3lyp/6-31g* force

ties of the exact binary value go to the even digit

0 1
   He               0.00195312    0.00585938   -0.00195312
   Ne              -0.00976562    1.00195312 1023.99804688
   Ar               0.00000001    0.00000001    0.00000002


