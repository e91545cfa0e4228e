"""A study: one case made from rasters and points, all of its directions, and what came of them.

    raster, sampling     values of any raster at given points, transformed exactly
    map_grid, map_file   the points of a map, and the text that a run reads
    terrain, land_cover  elevation and roughness on these points
    sites                turbine points of a table or a vector file
    mesh_keys            spacings and extents of the mesh for a number of cells
    new                  a study from all of that, with its case file and where it came from
    case_text            the case of one direction, made from the one that the user edits
    machine, prep_check  what a run needs, and what there is
    direction, run       one direction to its end, and all of them side by side
    slurm                the same as jobs of a cluster
    summary, status      what came of it

The functions take arrays and plain records and raise StudyError; the words on the screen are those
of `command`.
"""
