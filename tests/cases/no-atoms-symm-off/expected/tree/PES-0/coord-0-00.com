%chk=mol.chk
#p b3lyp/6-31g* force

nothing

0 1


