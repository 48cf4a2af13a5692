%chk=mol.chk
#p b3lyp/6-31g* force

water

0 1
   O                0.00000000    0.00000000    0.11700000
   H                0.00000000    0.75700000   -0.47100000
   H                0.00000000   -0.75700000   -0.47000000

H O 0
6-31G* 	
****


	indented with a tab
   indented with spaces

the last line



