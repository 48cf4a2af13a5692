a geometry of an earlier, larger molecule
