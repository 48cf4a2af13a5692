%chk=mol.chk
#p b3lyp/6-31g* force

more digits than a double holds

0 1
   He               0.12345678    0.12245678    1.00000000
   Ne               3.14159265   -2.71828183    0.00000000


