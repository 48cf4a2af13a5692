%chk=mol.chk
#p b3lyp/6-31g* force

water
	
still the title	

0 1
   O                0.00000000    0.00000000    0.11600000
   H                0.00000000    0.75700000   -0.47000000
   H                0.00000000   -0.75700000   -0.47000000

	
after 	
	

