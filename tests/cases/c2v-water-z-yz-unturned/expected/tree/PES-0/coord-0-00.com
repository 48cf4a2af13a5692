%chk=mol.chk
#p b3lyp/6-31g* force

water, axis along z, in the yz plane

0 1
   O                0.00000000    0.00000000    0.11730000
   H                0.00000000    0.75720000   -0.46920000
   H                0.00000000   -0.75720000   -0.46920000


