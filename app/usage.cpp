// The text of --help.
#include "app/command_line.hpp"

namespace viewer {

std::string export_usage() {
    return version_line() + R"(
usage: viewer [ARG] --plot PAGE:ROW [--plot PAGE:ROW ...] --out FILE [options]
       viewer [ARG] --overview PAGE --out FILE [options]
       viewer [ARG] --list
       viewer [ARG] --table KIND [--csv FILE]
       viewer [ARG] --particles NNNN|PATH [--plane A:B ...] [--slices N] [--sheet]
                    [--out FILE] [options]
       viewer --study [DIR ...] [--figures A,B,...] [--sort F] [--front A,B[,C]]
                    [--scatter A:B [--colour C] --out FILE] [--csv FILE] [--stats FILE]
       viewer [ARG] --serve [[HOST:]PORT]
       viewer --projects
       viewer --help | --version

Draws menu rows or the nine-panel overview sheet of a page into a file,
without a window. ARG names project and run as for the interactive viewer
(name, name., name,nnn, name.,nnn; default rfgun, run 001).

  --plot PAGE:ROW      a menu row: page 1 to 5, row 1 to 17, or 31 to 41 for
                       the right column of page 3; one page per --plot
  --overview PAGE      the overview sheet of the page (rows 1 to 9)
  --out FILE           .ps colour PostScript, .eps one encapsulated page,
                       .png (several plots: NAME.png, NAME_2.png, ...), .pdf
  --list               the rows this run offers, with their PAGE:ROW, and its
                       particle files: name, z [m], particles, active
  --table KIND         the run's table of that kind (Xemit, ref, track, ...)
                       as the viewer reads it: CSV, one column a field with
                       its unit, to standard output or to --csv FILE
  --projects           the projects with run tables in this directory, their
                       runs and the tables of each run
  --zoom LOW:HIGH      the abscissa window of each plot's family
  --geometry[=FILE]    lay the aperture outline over the plots (Geometry.dat)
  --bins N             bins of the histograms, 1 to 3200
  --fit PICK           fit of the fit menu on every plot that offers one:
                       1 A/r, 2 square root, 3 straight line, 4 parabolic,
                       5 power, 6 exponential, 7 mod. exponential,
                       8 3rd order polynom, 9 odd polynom, 10 gauss,
                       11 double gauss
  --mono               curves told apart by line style
  --size WxH           pixels of a .png page
  --runs LIST          several runs of the project on one plot: 1,3,5 or 1-5
                       or 2-4,7 or all (every run in the directory); 5-3 runs
                       downwards, 5, 4, 3; each run in its own colour with a
                       key, for the rows drawn against z
  --runs ITEM ...      runs of other projects and folders on one plot, each
                       [DIR/]PROJECT,RUN as one argument, as many as follow:
                       --runs mesh/gun_n=16,1 mesh/gun_n=128,1 ../old/gun,3
  --csv FILE           the points of each plot as drawn, one CSV file a plot
                       (FILE, then NAME_2.csv, NAME_3.csv, ...); without --out
                       nothing is drawn
  --stats FILE         the statistics blocks and fit reports as JSON

Particle files (PROJECT.NNNN.RUN, and any *.ini), without --out only their
statistics:
  --particles NNNN|PATH  the run's particle file at position NNNN, or any
                       particle file by its path
  --plane A:B          a phase-space plane, one page each (default x:xp), of
                       x, y, z [mm], xp, yp [mrad], px, py, pz [MeV/c],
                       E [MeV], dE [keV], t [ps]; dots up to 10^4 active
                       particles, a density image above; --bins N a side
  --slices N           the bunch in N slices: current, slice emittances,
                       energy and energy spread
  --along t|z          slices along t or z (default t, z for a bunch taken at
                       one time: every clock the same)
  --sheet              nine panels of the file on one page
  --lost               the particles not active (lost, not yet emitted) in grey
  --density            a density image whatever the number of particles
  --window X1:X2,Y1:Y2 the window of both axes of a plane (--zoom: the
                       abscissa only)

Studies: every run of a folder tree (8 levels at most), one line a run:
  --study [DIR ...]    the runs under each DIR (default .) with at least one
                       of .Xemit, .Yemit, .Zemit: folder, project, run, state
                       (complete, growing: changed in the last 60 s, empty,
                       partial: tables ending at different z) and figures
  --figures A,B,...    the figures shown (default NX_EMIT,NY_EMIT,X_RMS,
                       Y_RMS,Z_RMS,E_MEAN): each field of the last records,
                       Z_MEAN, CLOCK, and X_RMS_MIN, X_RMS_MIN_Z (likewise Y, Z)
  --sort F             sorted by a figure, smallest first (-F: largest first)
  --front A,B[,C]      marks the runs on the Pareto front of the figures,
                       smaller is better (-A: larger is better)
  --scatter A:B        one dot a run, the front joined and named; with --out
  --colour C           the dots coloured by a third figure, with a bar
  --csv, --stats       every figure of every run as CSV or JSON
A figure a run lacks is empty in CSV and null in JSON. A study of 10^5 runs
or more is sharded by folder: --study DIR --csv on each node, and the CSV
files concatenate (drop the header of all but the first).

  --serve [[HOST:]PORT]  the run in a browser, redrawn while the tracker
                       writes (default 127.0.0.1:8765; port 0: a free one);
                       prints the URL with its token, runs until interrupted

Statistics and fit reports go to standard output as in an interactive pass,
one block a run with --runs.
Exit status: 0 done, 1 no data, a file that cannot be read or written,
2 a command line that cannot be carried out.
)";
}

}  // namespace viewer
