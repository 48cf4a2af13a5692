#include "gaussian/route.hpp"

#include <gtest/gtest.h>

#include "gaussian/ready_input.hpp"
#include "gaussian/ready_route.hpp"
#include "support.hpp"

using namespace displacement_generator;

namespace {

using gaussian::parse_route;
using support::stopped_with;

/// A route as NAME[OPTION;OPTION]/NAME[...] NAME ...
std::string parts_of(std::string_view text) {
    std::string shown;
    const gaussian::route job = parse_route(text, "r:1");
    for (const gaussian::route_keyword& keyword : job.keywords) {
        shown += shown.empty() ? "" : " ";
        for (const gaussian::route_part& part : keyword.parts) {
            shown += (&part == keyword.parts.data() ? "" : "/") + part.name;
            for (const gaussian::route_option& option : part.options) {
                shown += "[" + option.name + "|" + option.text + "]";
            }
        }
    }
    return job.head + ": " + shown;
}

TEST(route, is_taken_apart) {
    const struct {
        const char* text;
        const char* parts;
    } rows[] = {
        {"# hf/sto-3g", "#: hf/sto-3g"},
        {"#p B3LYP/6-31G(d,p) opt", "#p: b3lyp/6-31g[d|d][p|p] opt"},
        {"#N  hf/3-21G*  Freq", "#N: hf/3-21g* freq"},
        {"#t", "#t: "},
        {"#test hf", "#: test hf"},
        {"#hf/sto-3g", "#: hf/sto-3g"},
        {"#p,hf,opt", "#p: hf opt"},
        {"# opt=(ts,CalcFC,MaxCycle=50)", "#: opt[ts|ts][calcfc|CalcFC][maxcycle|MaxCycle=50]"},
        {"# opt(ts , noeigentest)", "#: opt[ts|ts][noeigentest|noeigentest]"},
        {"# opt = ( ts ) freq", "#: opt[ts|ts] freq"},
        {"# opt (ts) freq", "#: opt[ts|ts] freq"},
        {"# opt=() freq()", "#: opt freq"},
        {"# external('a) b',c)", "#: external['a) b'|'a) b'][c|c]"},
        {"# guess=(read)-(mix) x", "#: guess[|(read)-(mix)] x"},  // brackets that are not one another's
        {"# mp2 / cc-pvdz scf = tight", "#: mp2/cc-pvdz scf[tight|tight]"},
        {"# mp2=full/gen", "#: mp2[full|full]/gen"},
        {"# scrf=(pcm,solvent=water) iop(3/76=1000000000)",
         "#: scrf[pcm|pcm][solvent|solvent=water] iop[3/76|3/76=1000000000]"},
        {"# irc=(report=(read,x),calcfc)", "#: irc[report|report=(read,x)][calcfc|calcfc]"},
        {"# opt=(ts)freq hf/6-31g(d)scf=tight", "#: opt[ts|ts] freq hf/6-31g[d|d] scf[tight|tight]"},
        {"# pop=(nbo)6d", "#: pop[nbo|nbo] 6d"},
        {"# mp4(sdtq)/6-31g(d) ccsd(t)-f12", "#: mp4[sdtq|sdtq]/6-31g[d|d] ccsd[|(t)-f12]"},
        {"# scf=(a\tb) x", "#: scf[a|a][b|b] x"},
        {"# opt=calcfc,tight,ts hf", "#: opt[calcfc|calcfc][tight|tight][ts|ts] hf"},
        {"# Opt(ts), CalcFC NoEigenTest,MaxCycles=50 freq,raman",
         "#: opt[ts|ts][calcfc|CalcFC][noeigentest|NoEigenTest][maxcycles|MaxCycles=50] freq[raman|raman]"},
        {"# opt,scf=tight,tight", "#: opt scf[tight|tight] tight"},  // of no job type
        {"# tight opt hf ts", "#: tight opt hf ts"},
        {"# opt,ts/6-31g", "#: opt ts/6-31g"},  // no word by itself
        {"# opt,maxdisk=1gb,test,temperature=300,symm", "#: opt maxdisk[1gb|1gb] test temperature[300|300] symm"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(parts_of(row.text), row.parts) << row.text;
    }
}

TEST(route, that_is_none_stops_the_run) {
    const auto message = [](std::string_view text) { return stopped_with([&] { parse_route(text, "r:1"); }); };
    EXPECT_EQ(message("hf"), "r:1: expected a route, which begins with '#', found 'hf'|standard error|2");
    EXPECT_EQ(message(""), "r:1: expected a route, which begins with '#', found ''|standard error|2");
    EXPECT_EQ(message("# opt=(ts"), "r:1: expected as many '(' as ')' in the route, found 'opt=(ts'|standard error|2");
    EXPECT_EQ(message("# opt)"), "r:1: expected as many '(' as ')' in the route, found 'opt)'|standard error|2");
    for (const char* text : {"/", "=x", "(x)", "hf/", "scf=", "#x", "%mem=1", "@x"}) {
        EXPECT_EQ(message(std::string("# opt,").append(text)),
                  std::string("r:1: expected a keyword with its options in the route, found '")
                      .append(text)
                      .append("'|standard error|2"));
    }
}

/// A route made ready, and its notices.
std::string ready(std::string_view text) {
    std::vector<gaussian::notice> notices;
    std::string result;
    const std::string error = stopped_with(
        [&] { result = gaussian::text_of(gaussian::ready_route(parse_route(text, "r:1"), true, "r:1", 1, notices)); });
    for (const gaussian::notice& told : notices) {
        support::log_message("notice: " + told.text);
        result += "|" + told.text;
    }
    return error == "no error" ? result : error;
}

TEST(route, becomes_ready) {
    const struct {
        const char* text;
        const char* expected;
    } rows[] = {
        {"# hf/sto-3g", "# hf/sto-3g force nosymm"},
        {"#P opt freq B3LYP/6-31G(d)", "#P B3LYP/6-31G(d) force nosymm"},
        {"# hf force NoSymm scf=tight", "# hf force NoSymm scf=tight"},
        {"# nosymm hf Force", "# nosymm hf Force"},
        {"# hf force force nosym symmetry=none", "# hf force nosym"},
        {"# hf symmetry=none", "# hf symmetry=none force"},
        {"# hf symmetry=(loose)", "# hf force nosymm|'symmetry=(loose)' left out: 'nosymm' takes its place"},
        {"# hf symm", "# hf force nosymm|'symm' left out: 'nosymm' takes its place"},
        {"# Optimize=(ts,calcfc) hf", "# hf force nosymm"},
        {"# fopt hf", "# hf force nosymm"},
        {"# opt=calcfc,tight,TS hf", "# hf force nosymm|'tight,TS' taken for options of 'opt', and left out with it"},
        {"# hf opt freq noraman scf=qc",
         "# hf scf=qc force nosymm|'noraman' taken for options of 'freq', and left out with it"},
        {"# freq(noraman) hf", "# hf force nosymm"},
        {"# frequency hf", "# hf force nosymm"},
        {"# irc=(calcfc) ircmax hf", "# hf force nosymm"},
        {"# sp hf", "# hf force nosymm"},
        {"# scan polar admp bomd volume hf", "# hf force nosymm"},
        {"# forces hf", "# hf force nosymm"},
        {"# hf stable=opt",
         "# hf force nosymm|'stable=opt' left out: make sure that the jobs find the stable wave function"},
        {"# hf geom=connectivity", "# hf geom=connectivity force nosymm"},
        {"# hf geom=(connectivity,nocrowd,modredundant)", "# hf geom=(connectivity,nocrowd) force nosymm"},
        {"# hf geom=(modredundant,Connect)", "# hf geom=Connect force nosymm"},
        {"# hf geom=modredundant", "# hf force nosymm"},
        {"# hf geom=(check,notest)", "# hf geom=notest force nosymm"},
        {"# hf opt=qst3", "# hf force nosymm"},  // of a log: an input with this is refused
        {"# b3lyp/gen td=(Read,Root=2)",
         "# b3lyp/gen td=(Root=2) force nosymm|'Read' of 'td=(Read,Root=2)' left out: the jobs have no checkpoint file "
         "to "
         "read from"},
        {"# cis(read)/6-31g*",
         "# cis/6-31g* force nosymm|'read' of 'cis(read)/6-31g*' left out: the jobs have no checkpoint file to read "
         "from"},
        {"# ccsd=(t,full,ReadAmplitudes)/gen iop(1/2=3)",
         "# ccsd=(t,full)/gen iop(1/2=3) force nosymm|'ReadAmplitudes' of 'ccsd=(t,full,ReadAmplitudes)/gen' left out: "
         "the jobs have no checkpoint file to read from"},
        {"# hf/6-31g(d)/auto td=(root=1)/b3lyp/6-31g", "# hf/6-31g(d)/auto td=(root=1)/b3lyp/6-31g force nosymm"},
        {"# nonstd 1/38=1/1; 2//2;",
         "r:1: 'nonstd' lists overlays, which cannot be kept; give the route of a method with --route|standard "
         "error|2"},
        {"# hf ExtraOverlays",
         "r:1: 'ExtraOverlays' lists overlays, which cannot be kept; give the route of a method with --route|standard "
         "error|2"},
        {"# hf guess=(fragment=2)",
         "r:1: 'guess=(fragment=2)' needs fragments, which cannot be kept; give a route without it with "
         "--route|standard error|2"},
        {"# oniom(hf/(3-21g)/x:uff)",
         "r:1: 'oniom(hf/(3-21g)/x:uff)' needs layers of atoms, which cannot be kept; give the route of one "
         "method|standard error|2"},
        {"# hf guess=read",
         "# hf force nosymm|'read' of 'guess=read' left out: the jobs have no checkpoint file to read a guess from"},
        {"# hf guess(mix,read)",
         "# hf guess=mix force nosymm|'read' of 'guess(mix,read)' left out: the jobs have no checkpoint file to read a "
         "guess from"},
        {"# hf guess=(read,mix=) opt",  // without brackets the sign would join what follows
         "# hf guess=(mix=) force nosymm|'read' of 'guess=(read,mix=)' left out: the jobs have no checkpoint file to "
         "read a guess from"},
        {"# hf guess=(mix/fix,read)",  // outside the brackets the slash would begin another keyword
         "# hf guess=(mix/fix) force nosymm|'read' of 'guess=(mix/fix,read)' left out: the jobs have no checkpoint "
         "file "
         "to read a guess from"},
        {"# hf guess=only", "# hf force nosymm|'only' of 'guess=only' left out: the jobs must go on after the guess"},
        {"# hf guess=mix", "# hf guess=mix force nosymm"},
        {"# hf guess", "# hf guess force nosymm"},
        {"#T hf", "# hf force nosymm"},
        {"# hf charge", "# hf charge force nosymm"},
        {"# external='run.sh' 6-31G(d') opt", "# external='run.sh' 6-31G(d') force nosymm"},
        {"# external='run.sh opt' hf", "# external='run.sh opt' hf force nosymm"},
        {"# external = \"run.sh  a,b/c (d='\" opt", "# external=\"run.sh  a,b/c (d='\" force nosymm"},
        {"# external='run=' hf", "# external='run=' hf force nosymm"},
        {"#'run.sh opt' hf", "# 'run.sh opt' hf force nosymm"},
        {"# hf guess=(read,mix/ \",)\" ) x",
         "# hf guess=(mix/,\",)\") x force nosymm|'read' of 'guess=(read,mix/ \",)\" )' left out: the jobs have no "
         "checkpoint file to read a guess from"},
        {"# hf external='run.sh",
         "r:1: expected a second quotation mark in the route, found ''run.sh'|standard error|2"},
        {"# hf external=\"", "r:1: expected a second quotation mark in the route, found '\"'|standard error|2"},
        {"# hf guess=(read,'ix) scf=tight",
         "r:1: expected a second quotation mark in the route, found ''ix) scf=tight'|standard error|2"},
        {"# hf charge=(angstroms,StandardOrientation)",
         "r:1: 'charge=(angstroms,StandardOrientation)' has its charges in the standard orientation, which the jobs "
         "will not have; give them in the frame of the input|standard error|2"},
        {"# hf guess=tcheck", "# hf guess=tcheck force nosymm"},
        {"# hf units=bohr", "# hf force nosymm|'units=bohr' left out: coordinates are written in angstrom"},
        {"# hf pop=nbo SCRF=(SMD,solvent=Water) EmpiricalDispersion=GD3BJ int=ultrafine",
         "# hf pop=nbo SCRF=(SMD,solvent=Water) EmpiricalDispersion=GD3BJ int=ultrafine force nosymm"},
        {"# hf guess=(Read,Alter)",
         "r:1: 'guess=(Read,Alter)' reads a checkpoint file, which the jobs will not have; give a route without it "
         "with --route|standard error|2"},
        {"# hf guess(permute,checkpoint)",
         "r:1: 'guess(permute,checkpoint)' reads a checkpoint file, which the jobs will not have; give a route without "
         "it with --route|standard error|2"},
        {"# hf guess=(mix,alter)", "# hf guess=(mix,alter) force nosymm"},
        {"# b3lyp/chkbasis",
         "r:1: 'b3lyp/chkbasis' reads a checkpoint file, which the jobs will not have; give a route without it "
         "with --route|standard error|2"},
        {"# b3lyp chkbas",
         "r:1: 'chkbas' reads a checkpoint file, which the jobs will not have; give a route without it "
         "with --route|standard error|2"},
        {"# hf scf=restart",
         "r:1: 'scf=restart' reads a checkpoint file, which the jobs will not have; give a route without it "
         "with --route|standard error|2"},
        {"# hf density=checkpoint",
         "r:1: 'density=checkpoint' reads a checkpoint file, which the jobs will not have; give a route without it "
         "with --route|standard error|2"},
        {"# hf geom=(check,readharmonic)",
         "r:1: 'geom=(check,readharmonic)' adds a potential that is fixed in space and cannot be kept; take it "
         "out|standard error|2"},
        {"# g4",
         "r:1: 'g4' is a compound method, for which there are no forces; give the route of another method|standard "
         "error|2"},
        {"# CBS-QB3",
         "r:1: 'CBS-QB3' is a compound method, for which there are no forces; give the route of another "
         "method|standard error|2"},
        {"# oniom(hf:uff)",
         "r:1: 'oniom(hf:uff)' needs layers of atoms, which cannot be kept; give the route of one "
         "method|standard error|2"},
        {"# hf counterpoise=2",
         "r:1: 'counterpoise=2' needs fragments, which cannot be kept; give a route without it with "
         "--route|standard error|2"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ready(row.text), row.expected) << row.text;
    }
}

TEST(route, has_no_other_job_type_when_it_is_ready) {
    for (const char* type :
         {"sp",   "SinglePoint", "opt",  "fopt", "popt",         "optimize", "freq",   "frequencies", "irc", "IRCMax",
          "scan", "polar",       "admp", "bomd", "trajectories", "forces",   "volume", "eet",         "lst", "LSTA"}) {
        EXPECT_EQ(ready(std::string("# hf ").append(type)), "# hf force nosymm") << type;
        EXPECT_EQ(ready(std::string("# ").append(type).append("=(x,y) hf")), "# hf force nosymm") << type;
    }
}

TEST(route, has_slashes_between_method_and_basis_alone) {
    for (const char* name : {"opt", "freq", "sp", "forces", "geom", "nmr", "output", "pop", "prop", "symmetry",
                             "nosymm", "force", "guess", "units", "cphf", "charge"}) {
        const std::string message =
            std::string("r:1: expected a blank between '").append(name).append("' and other keywords, found '");
        for (const std::string& text :
             {std::string("hf/6-31g/").append(name).append("=(a,b)"), std::string(name).append("=(a/b,c)/hf/6-31g")}) {
            EXPECT_EQ(ready("# " + text), message + text + "'|standard error|2");
        }
    }
}

TEST(route, has_no_bare_options_of_a_job_type_when_it_is_ready) {
    for (const char* option :
         {"ts",        "QST2",       "qst3",     "tight",     "verytight", "loose",     "expert",
          "cartesian", "redundant",  "rfo",      "rcfc",      "readfc",    "raman",     "vcd",
          "roa",       "numer",      "enonly",   "forward",   "reverse",   "lqa",       "hpc",
          "calcfc",    "calcall",    "estmfc",   "newestmfc", "noeigen",   "eigentest", "modredundant",
          "addred",    "z-matrix",   "zmatrix",  "gdiis",     "gediis",    "maxcyc=9",  "maxstep=5",
          "maxp=20",   "stepsize=5", "recalc=3", "notrust",   "noraman",   "hpmodes",   "readisotopes",
          "anharm",    "savenorm",   "intmodes", "hindered",  "readopt",   "readfreeze"}) {
        EXPECT_EQ(ready(std::string("# irc ").append(option).append(" hf")).substr(0, 18), "# hf force nosymm|")
            << option;
        EXPECT_EQ(ready(std::string("# irc hf ").append(option)),
                  std::string("# hf ").append(option).append(" force nosymm"));
    }
}

TEST(route, that_is_ready_stays_as_it_is) {
    for (const char* text : {"#p B3LYP/6-31G(d) geom=(connectivity,nocrowd) SCF=(tight,xqc) force nosymm",
                             "# force NoSymmetry hf/gen pseudo=read", "#N SYMM=NONE FORCE HF/STO-3G"}) {
        EXPECT_EQ(ready(text), text);
    }
}

TEST(route, that_is_ready_has_no_analysis_that_needs_a_section_or_writes_a_shared_file) {
    const auto without = [](std::string_view text) {
        std::vector<gaussian::notice> notices;
        std::string result =
            gaussian::text_of(gaussian::ready_route(parse_route(text, "r:1"), true, "r:1", 3, notices));
        EXPECT_TRUE(result.ends_with(" force nosymm")) << result;
        result.resize(result.size() - std::string_view(" force nosymm").size());
        for (const gaussian::notice& told : notices) {
            support::log_message("notice: " + told.text);
            result.append("|").append(std::to_string(told.line)).append(told.text);
        }
        return result;
    };
    const std::string no_force = " left out: forces do not depend on it";
    const std::string same_file = " left out: all jobs would write the same file";
    EXPECT_EQ(without("# hf pop=nboread"), "# hf|3'nboread' of 'pop=nboread'" + no_force);
    EXPECT_EQ(without("# hf pop=(nbodel,full)"), "# hf pop=full|3'nbodel' of 'pop=(nbodel,full)'" + no_force);
    EXPECT_EQ(without("# hf Population(Full,NBO7Read,ReadRadii)"),
              "# hf Population=Full|3'NBO7Read' of 'Population(Full,NBO7Read,ReadRadii)'" + no_force +
                  "|3'ReadRadii' of 'Population(Full,NBO7Read,ReadRadii)'" + no_force);
    EXPECT_EQ(without("# hf cphf=(rdfreq,noread)"), "# hf cphf=noread|3'rdfreq' of 'cphf=(rdfreq,noread)'" + no_force);
    EXPECT_EQ(without("# hf CPHF(ReadFreq)"), "# hf|3'ReadFreq' of 'CPHF(ReadFreq)'" + no_force);
    EXPECT_EQ(without("# hf prop=(efg,read)"), "# hf prop=efg|3'read' of 'prop=(efg,read)'" + no_force);
    EXPECT_EQ(without("# hf properties=opt"), "# hf|3'opt' of 'properties=opt'" + no_force);
    for (const char* keyword : {"NMR", "nmr=giao", "nmr=(spinspin,readatoms)", "output=pickett", "Output"}) {
        EXPECT_EQ(without(std::string("# ").append(keyword).append(" hf")),
                  std::string("# hf|3'").append(keyword).append("'").append(no_force));
    }
    for (const char* keyword :
         {"output=wfx", "output(wfn,pickett)", "Output=PSI", "output=RawMatrixElement", "output=(matrix)",
          "Punch=(MO,derivatives)", "cube=density", "FormCheck", "formchk=all"}) {
        EXPECT_EQ(without(std::string("# ").append(keyword).append(" hf")),
                  std::string("# hf|3'").append(keyword).append("'").append(same_file));
    }
    for (const char* text :
         {"# hf/gen pop=(nbo,full) prop=efg", "# hf scrf=(read) pop", "# td=(nstates=3,root=2) cphf=conver=9 density",
          "# hf gfinput iop(6/7=3) pseudo=read", "# output98 nmrx"}) {
        EXPECT_EQ(without(text), text);
    }
}

TEST(route, tells_whether_it_goes_on_with_a_job) {
    for (const char* text : {"#p restart", "# opt=restart", "# hf freq=(restart)", "# irc(maxpoints=9,Restart)"}) {
        EXPECT_TRUE(gaussian::is_restart(parse_route(text, "r:1"))) << text;
    }
    for (const char* text : {"# hf opt", "# hf scf=restart"}) {
        EXPECT_FALSE(gaussian::is_restart(parse_route(text, "r:1"))) << text;
    }
}

TEST(route, tells_what_may_end_at_no_stationary_point) {
    for (const char* text : {"# hf opt=(calcfc,ModRedundant)", "# hf opt=readopt", "# hf geom=addgic",
                             "# hf freq=modred", "# hf OPT=rdfreeze", "# hf Scan", "# hf ircmax", "# hf IRC=calcfc",
                             "# hf bomd", "# hf ADMP", "# hf trajectories"}) {
        EXPECT_EQ(gaussian::may_end_elsewhere(parse_route(text, "r:1")), std::string_view(text).substr(5));
    }
    EXPECT_EQ(gaussian::may_end_elsewhere(parse_route("# hf/gen opt=(calcfc,readfc) geom=connectivity", "r:1")), "");
}

TEST(route, tells_what_fixed_in_space) {
    for (const char* text : {"# hf Field=X+10", "# hf charge", "# hf massage", "# hf charge=angstroms",
                             "# hf guess=(mix,cards)", "# hf guess=input"}) {
        EXPECT_EQ(gaussian::fixed_in_space(parse_route(text, "r:1")), std::string_view(text).substr(5));
    }
    EXPECT_EQ(gaussian::fixed_in_space(parse_route("# hf scf=(tight) pop=full guess=mix", "r:1")), "");
    EXPECT_EQ(gaussian::fixed_in_space(parse_route("# hf scf=input", "r:1")), "");
}

}  // namespace
