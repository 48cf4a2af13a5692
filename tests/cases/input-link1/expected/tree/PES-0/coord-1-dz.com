%chk=mol.chk
#p b3lyp/6-31g* force

first job

0 1
 F       0.000000    0.000000    0.000000

--Link1--
%chk=second.chk
#p hf/6-31g force

second job

1 2
   O                0.00000000    0.00000000    0.11600000
   H                0.00000000    0.75700000   -0.47000000
   H                0.00000000   -0.75700000   -0.47000000


