&control
 fxyz = 'mol.gjf'
/
