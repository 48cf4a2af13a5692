its reference geometry
