#include <gtest/gtest.h>

#include <cmath>

#include "gaussian/ready_input.hpp"
#include "gjf/gjf.hpp"
#include "support.hpp"

using namespace displacement_generator;

namespace {

using support::stopped_with;

const std::string hydrogen =
    "   H                0.00000000    0.00000000    0.00000000\n"
    "   H                0.00000000    0.00000000    0.74000000\n";

struct prepared {
    std::string text;  ///< of the ready input, or the message
    std::string notices;
    std::string in_space;
};

prepared prepare(std::string_view text, std::string_view route = "") {
    std::vector<gaussian::notice> notices;
    prepared result;
    const std::string error = stopped_with([&] {
        const gaussian::ready_input ready =
            gaussian::make_ready(gaussian::read_input(text, "m", notices), route, notices);
        result.text = gaussian::write_input(ready);
        result.in_space = ready.fixed_in_space;
    });
    for (const gaussian::notice& told : notices) {
        support::log_message("notice: " + told.text);
        result.notices.append(std::to_string(told.line)).append(" ").append(told.text).append("\n");
    }
    if (error != "no error") {
        result.text = error;
    }
    return result;
}

/// An input of H2 with a route and what stands behind the atoms, which begins on line 8.
std::string job(const std::string& route, const std::string& behind,
                const std::string& atoms = "H 0 0 0\nH 0 0 .74\n") {
    return route + "\n\nt\n\n0 1\n" + atoms + behind;
}

/// The same, ready.
std::string ready(const std::string& route, const std::string& behind = "") {
    return route + "\n\nt\n\n0 1\n" + hydrogen + "\n" + behind;
}

TEST(make_ready, writes_what_the_generator_reads) {
    support::scratch_folder folder;
    const std::string text =
        prepare(
            "%chk=a\n%Mem=1GB\n%oldchk=b\n %RWF=c\n%nprocshared=4\n! note\n#p b3lyp/gen opt\n\nPd water\nsecond "
            "line\n\n"
            "-1 2\nPD 0 0 -1e-9\nh 1. 2.5 -3.25\n17 -999.999 9999.5 1e-8\n\nH Pd Cl 0\n3-21G\n****\n")
            .text;
    EXPECT_EQ(text,
              "%Mem=1GB\n%nprocshared=4\n! note\n#p b3lyp/gen force nosymm\n\nPd water\nsecond line\n\n-1 2\n"
              "   Pd               0.00000000    0.00000000    0.00000000\n"
              "   H                1.00000000    2.50000000   -3.25000000\n"
              "   Cl            -999.99900000 9999.50000000    0.00000001\n"
              "\nH Pd Cl 0\n3-21G\n****\n\n");
    support::write_file("mol.gjf", text);
    int natom = 0;
    gjf::get_gjf_natom("mol.gjf", natom);
    ASSERT_EQ(natom, 3);
    const base::array2<double> xyz("xyz", 3, 3);
    const base::array1<base::text<2>> symbol("symbol", 1, 3);
    gjf::get_gjf_coord("mol.gjf", natom, xyz, symbol);
    EXPECT_EQ(std::string_view(symbol(1)), "Pd");
    EXPECT_EQ(std::string_view(symbol(2)), "H ");
    EXPECT_EQ(xyz(3, 2), -3.25);
    EXPECT_EQ(xyz(3, 3), 1e-8);
}

TEST(make_ready, takes_the_section_of_a_removed_keyword_along) {
    const std::string basis = "H 0\n6-31G\n****\n\n";
    const std::string connectivity = " 1 2 1.0\n 2\n\n";
    const struct {
        std::string text;
        std::string expected;
    } rows[] = {
        {job("# hf opt=modredundant", "\nB 1 2 F\n\n"), ready("# hf force nosymm")},
        {job("# hf opt=modredundant", "\n"), ready("# hf force nosymm")},
        {job("# hf\n#p opt freq scf=xqc", ""), ready("# hf scf=xqc force nosymm")},
        {job("# hf\n#pbepbe opt", ""), ready("# hf pbepbe force nosymm")},
        {job("# hf/gen opt=tight,modredundant", "\nB 1 2 F\n\n" + basis), ready("# hf/gen force nosymm", basis)},
        {job("# hf/gen freq=(modredundant,intmodes)", "\nB 1 2 F\n\n" + basis), ready("# hf/gen force nosymm", basis)},
        {job("# hf opt=modredundant", ""), ready("# hf force nosymm")},
        {job("# hf Opt(ModRedun,TS)", "\n* * B\n1 2 F\n\n"), ready("# hf force nosymm")},
        {job("# hf/gen opt=modredundant", "\nB 1 2 F\n\n" + basis), ready("# hf/gen force nosymm", basis)},
        {job("# hf/gen opt=addredundant", "\n\n" + basis), ready("# hf/gen force nosymm", basis)},
        {job("# hf/gen opt", "\n" + basis), ready("# hf/gen force nosymm", basis)},
        {job("# hf/gen opt=(readopt,modred) geom=connectivity",
             "\n" + connectivity + "notatoms=1\n\nB 1 2 F\n\n" + basis),
         ready("# hf/gen geom=connectivity force nosymm", connectivity + basis)},
        {job("# hf/gen geom=(connectivity,modredundant)", "\n" + connectivity + "B 1 2 F\n\n" + basis),
         ready("# hf/gen geom=connectivity force nosymm", connectivity + basis)},
        {job("# hf/gen freq=readisotopes opt=readfreeze", "\n1 2\n\n298.15 1.0\n1\n2\n\n" + basis),
         ready("# hf/gen force nosymm", basis)},
        {job("# hf/gen opt=rdopt", "\n1\n\n" + basis), ready("# hf/gen force nosymm", basis)},
        {job("# hf/gen opt=rdfre", "\n1\n\n" + basis), ready("# hf/gen force nosymm", basis)},
        {job("# hf/gen opt=rdfrozen freq=rdiso", "\n1\n\n298 1\n\n" + basis), ready("# hf/gen force nosymm", basis)},
        {job("# hf charge freq=readiso", "\n298 1\n1\n1\n\n0 0 5 1\n\n"),
         ready("# hf charge force nosymm", "0 0 5 1\n\n")},
        {job("# hf irc=(report=read,calcfc)", "\n1 2\n\n"), ready("# hf force nosymm")},
        {job("# hf freq=(anharmonic,readanharm)", "\nprint=all\n\n"), ready("# hf force nosymm")},
        {job("# hf opt=addgic", "\nR(1,2)=B(1,2)\n\n"), ready("# hf force nosymm")},
        {job("# hf admp=(stepsize=1000)", ""), ready("# hf force nosymm")},
        {job("# hf opt=modredundant scrf=read", "\nB 1 2 F\n\neps=5.\n\n"),
         ready("# hf scrf=read force nosymm", "eps=5.\n\n")},
        {job("# hf opt=modredundant scrf=read", "\n\neps=5.\n\n"), ready("# hf scrf=read force nosymm", "eps=5.\n\n")},
        {job("# hf output=wfx", "\nh2.wfx\n\n"), ready("# hf force nosymm")},
        {job("# hf output=(wfn,pickett)", "\nh2.wfn\n"), ready("# hf force nosymm")},
        {job("# hf output=wfn", ""), ready("# hf force nosymm")},
        {job("# hf/gen output=wfx", "\n" + basis + "h2.wfx\n\n"), ready("# hf/gen force nosymm", basis)},
        {job("# hf/gen output=wfx", "\n" + basis + "\nh2.wfx\n\n"), ready("# hf/gen force nosymm", basis)},
        {job("# hf/gen output=pickett", "\n" + basis), ready("# hf/gen force nosymm", basis)},
        {job("# output=wfx hf/genecp scrf=read pop=(nboread,full)",
             "\n" + basis + "H 0\nH-ECP 1 2\n\neps=5.\n\n$NBO $END\n\nh2.wfx\n\n"),
         ready("# hf/genecp scrf=read pop=full force nosymm", basis + "H 0\nH-ECP 1 2\n\neps=5.\n\n")},
        {job("# hf/gen pseudo=read pop=nboread", "\n" + basis + "H 0\nH-ECP 1 2\n\n$NBO $END\n\n"),
         ready("# hf/gen pseudo=read force nosymm", basis + "H 0\nH-ECP 1 2\n\n")},
        {job("# hf/gen nmr=(spinspin,readatoms)", "\n" + basis + "atoms=1\n\n"), ready("# hf/gen force nosymm", basis)},
        {job("# hf/gen prop=(efg,read)", "\n" + basis + "0. 0. 1.\n\n"),
         ready("# hf/gen prop=efg force nosymm", basis)},
        {job("# hf prop=opt", "\n0. 0. 1.\n\n"), ready("# hf force nosymm")},
        {job("# hf/gen pop=(mk,readradii)", "\n" + basis + "H 1.2\n\n"), ready("# hf/gen pop=mk force nosymm", basis)},
        {job("# hf/gen cube=density", "\n" + basis + "h2.cube\n0 0. 0. 0.\n\n"), ready("# hf/gen force nosymm", basis)},
        {job("# hf/gen nmr formcheck punch=mo", "\n" + basis), ready("# hf/gen force nosymm", basis)},
        {job("# hf/gen freq cphf=rdfreq", "\n0.1\n\n" + basis), ready("# hf/gen force nosymm", basis)},
        {job("# hf charge polar cphf=(rdfreq,conver=9)", "\n0.1\n\n0 0 5 1\n\n"),
         ready("# hf charge cphf=(conver=9) force nosymm", "0 0 5 1\n\n")},
        {job("# casscf(2,2,stateaverage)/sto-3g output=wfn", "\n0.5 0.5\n\nh2.wfn\n\n"),
         ready("# casscf(2,2,stateaverage)/sto-3g force nosymm", "0.5 0.5\n\n")},
        {job("# hf scrf=dipole output=wfn", "\n3.5 78.4\n\nh2.wfn\n\n"),
         ready("# hf scrf=dipole force nosymm", "3.5 78.4\n\n")},
        {job("# hf/gen", "\n" + basis + "\nrest\n"), ready("# hf/gen force nosymm", basis + "\nrest\n\n")},
        {job("# hf guess=alter pop=nboread", "\n1 2\n\n$NBO $END\n\n"),
         ready("# hf guess=alter force nosymm", "1 2\n\n")},
        {job("# hf geom=connectivity", "\n 1 2 1.0\n 2\n"), ready("# hf geom=connectivity force nosymm", connectivity)},
        {job("# hf geom=connectivity", ""), ready("# hf force nosymm")},
        {job("# hf", "\nVariables:\nunused 1.0\n\nConstants:\nunused 1.0\n\n"), ready("# hf force nosymm")},
        {job("# hf geom=connectivity", "\n1 2 1.0\n2\n"),
         ready("# hf geom=connectivity force nosymm", "1 2 1.0\n2\n\n")},
        {job("# hf opt=modredundant freq=readiso", "\nB 1 2 F\n\n"), ready("# hf force nosymm")},
        {job("# hf opt=modredundant freq=readanharm", "\nB 1 2 F\n\nprint=all\n\n"), ready("# hf force nosymm")},
        {job("# hf guess=read output=wfn", "\nh2.wfn\n\n"), ready("# hf force nosymm")},
        {job("# cis(read) output=wfn", "\nh2.wfn\n\n"), ready("# cis force nosymm")},
        {job("# hf geom=(connectivity,nocrowd)", ""), ready("# hf geom=nocrowd force nosymm")},
        {job("# hf geom=connectivity scrf=read", "\n\neps=5.\n\n"), ready("# hf scrf=read force nosymm", "eps=5.\n\n")},
        {job("# hf geom=connectivity", "\n! bonds\n 1 2 1.0 ! one\n 2\n"),
         ready("# hf geom=connectivity force nosymm", "! bonds\n 1 2 1.0 ! one\n 2\n\n")},
        {job("# hf/gen opt=modredundant geom=addredundant", "\nB 1 2 F\n\n" + basis),
         ready("# hf/gen force nosymm", basis)},
        {job("# hf scrf=read irc=(report=bonds,calcfc)", "\neps=5.\n\n"),
         ready("# hf scrf=read force nosymm", "eps=5.\n\n")},
        {job("# hf scrf=read irc=(report=read)", "\n1 2\n\neps=5.\n\n"),
         ready("# hf scrf=read force nosymm", "eps=5.\n\n")},
        {job("# hf output=wfn pop=nboread", "\nh2.wfn\n\n"), ready("# hf force nosymm")},
        {job("# hf freq=(anharmonic,readanharm)", ""), ready("# hf force nosymm")},
        {job("# hf freq=(readanharm,fccards)", "\nprint=all\n\n0.1\n\n"), ready("# hf force nosymm")},
        {job("# amber cphf=rdfreq", "\n0.1\n\n"), ready("# amber force nosymm")},
        {job("# amber=hardfirst cphf=rdfreq", "\nown\n\n0.1\n\n"), ready("# amber=hardfirst force nosymm", "own\n\n")},
        {job("# uff=softfirst cphf=rdfreq", "\nown\n\n0.1\n\n"), ready("# uff=softfirst force nosymm", "own\n\n")},
        {job("# dreiding=softonly cphf=rdfreq", "\nown\n\n0.1\n\n"),
         ready("# dreiding=softonly force nosymm", "own\n\n")},
        {job("# mm=modify cphf=rdfreq", "\nown\n\n0.1\n\n"), ready("# mm=modify force nosymm", "own\n\n")},
    };
    for (const auto& row : rows) {
        const std::string found = prepare(row.text).text;
        EXPECT_EQ(found, row.expected) << row.text;
        const prepared again = prepare(found);
        EXPECT_EQ(again.text, found) << row.text;
        EXPECT_EQ(again.notices, "") << row.text;
    }
}

TEST(make_ready, knows_which_options_of_a_job_type_have_a_section) {
    for (const char* keyword : {"freq=fccards", "freq=cards", "freq=selectanharmonic", "freq=HinderedRotor",
                                "freq=readanharm", "polar=rdfreq", "opt=fccards", "geom=rdstep"}) {
        EXPECT_EQ(prepare(job(std::string("# hf ").append(keyword), "\n0.1 0.2\n\n")).text, ready("# hf force nosymm"))
            << keyword;
    }
    const std::string basis = "H 0\n6-31G\n****\n\n";
    for (const char* keyword :
         {"opt=readfc", "opt=readcartesianfc", "freq=readnormalmodes", "freq=readinternalmodes", "freq=intmodes"}) {
        EXPECT_EQ(prepare(job(std::string("# hf/gen ").append(keyword), "\n" + basis)).text,
                  ready("# hf/gen force nosymm", basis))
            << keyword;
    }
}

TEST(make_ready, tells_of_coordinates_that_were_frozen_or_scanned) {
    const std::string optimised = " left out: the geometry is taken as it is, make sure that it is optimised already\n";
    const std::string frozen =
        " left out, which freezes or scans coordinates: make sure that the geometry is a stationary point\n";
    const auto told = [](const std::string& keyword, const std::string& lines) {
        const prepared found = prepare(job("# hf " + keyword, "\n" + lines + "\n\n"));
        EXPECT_EQ(found.text, ready("# hf force nosymm"));
        return found.notices;
    };
    for (const char* line : {"B 1 2 F", "1 2 f", "* * F", "B 1 2 S 10 0.05", "B,1,2,1.5,S,10,0.05", "X 1 F ! fixed",
                             "1 F", "R1(Freeze)=B(1,2)", "R1(F)=B(1,2)", "R1(value=1.2,frozen)=B(1,2)",
                             "R1(NSteps=10,StepSize=0.1)=R(1,2)", "X1(f,value=2)=X(1)"}) {
        EXPECT_EQ(told("opt=modredundant", std::string("B 1 2 A\n").append(line)),
                  "1 'opt=modredundant'" + optimised + "10 '" + line + "'" + frozen);
    }
    for (const char* line : {"B 1 2 A", "B 1 2 1.4 B", "B 1 2 K ! F", "1 2 H 0.5", "! F", "R1=B(1,2)", "F 1 2",
                             "Atoms 1", "NoAtoms", "NotAtoms 1"}) {
        EXPECT_EQ(told("opt=modredundant", line), "1 'opt=modredundant'" + optimised) << line;
    }
    EXPECT_EQ(told("opt=modredundant", "B 1 2 F\nX 1 F"), "1 'opt=modredundant'" + optimised + "9 'B 1 2 F'" + frozen);
    EXPECT_EQ(told("opt(readopt)", "! all\nnoatoms atoms=1"),
              "1 'opt(readopt)'" + optimised + "10 'noatoms atoms=1'" + frozen);
    EXPECT_EQ(told("geom=modredundant", "B 1 2 F"), "9 'B 1 2 F'" + frozen);
    EXPECT_EQ(told("freq=readiso", "B 1 2 F").find("stationary"), std::string::npos);
}

TEST(make_ready, tells_of_jobs_that_move_the_atoms_along_a_path) {
    for (const std::string keyword : {"scan", "IRC=(calcfc,maxpoints=20)", "ircmax", "admp", "BOMD", "trajectory"}) {
        EXPECT_EQ(prepare(job("# hf " + keyword, "")).notices,
                  "1 '" + keyword + "' left out: make sure that the geometry is a stationary point\n");
    }
    EXPECT_EQ(prepare(job("# hf freq polar", "")).notices, "");
}

TEST(make_ready, tells_of_atoms_of_one_element_with_different_basis_sets) {
    const auto told = [](const std::string& line, const std::string& rest) {
        return prepare(job("# hf/gen", "\n" + line + "\n6-31G\n****\n" + rest + "\n3-21G\n****\n\n",
                           "O 0 0 0\nH 0 .7 .5\nH 0 -.7 .5\nO 0 0 3\nHe 0 0 5\n"))
            .notices;
    };
    const std::string some =
        " names some atoms of an element and not all: if symmetry exchanges them with the others, set symm = F in the "
        "generator's control file\n";
    EXPECT_EQ(told("1-2 0", "3 4 0"), "12 '1-2 0'" + some + "15 '3 4 0'" + some);
    EXPECT_EQ(told("2,4 0 ! two", "O 0"), "12 '2,4 0 ! two'" + some);
    EXPECT_EQ(told("1-1 4 0", "2 0"), "15 '2 0'" + some);
    for (const char* whole : {"1 4 0", "2-3 0", "5 0", "1-4 0", "O H 0", "2", "0", "2 6 0", "0 2 0", "2-1 0", "2-9 0",
                              "2-2000000000 0", "-2 0", "2- 0"}) {
        EXPECT_EQ(told(whole, "He 0"), "") << whole;
    }
}

TEST(make_ready, tells_of_atoms_of_one_element_with_different_radii) {
    const auto told = [](const std::string& keyword, const std::string& sections) {
        return prepare(job("# hf " + keyword, "\n" + sections + "\n",
                           "O 0 0 0\nH 0 .7 .5\nH 0 -.7 .5\nO 0 0 3\nHe 0 0 5\n"))
            .notices;
    };
    const std::string some =
        " names some atoms of an element and not all: if symmetry exchanges them with the others, set symm = F in the "
        "generator's control file\n";
    EXPECT_EQ(told("scrf=read", "eps=5.\nModifySph\n\n2 2.0\n"), "15 '2 2.0'" + some);
    EXPECT_EQ(told("scrf=read", "modifysph\n\n 2 2.0\n3 2.1 ! more\n5 1.0\n"),
              "14 '2 2.0'" + some + "15 '3 2.1 ! more'" + some);
    EXPECT_EQ(told("scrf=read", "modifysph\n\n2 2.0\n3 2.0 ! the other\n"), "");
    EXPECT_EQ(told("scrf=read", "modifysph\n\n! one of two\n2 2.0\n"), "15 '2 2.0'" + some);
    EXPECT_EQ(told("scrf=read", "modifysph\n\n2 2.0 1.1\n3 2.0\n"), "14 '2 2.0 1.1'" + some + "15 '3 2.0'" + some);
    EXPECT_EQ(told("scrf=read", "modifysph\n\n2-3 2.0\nO 1.5\n5 1.7\n1\n9 2.0\n, 2 2.0\n+2 2.5\n"), "");
    EXPECT_EQ(told("scrf=read", "eps=5. ! modifysph\n\n2 2.0\n"), "");
    EXPECT_EQ(told("scrf=read", "modifysph\n\n\n2 2.0\n"), "");  // an empty section: no radii
    EXPECT_EQ(told("massage", "2 Nuc 2.0\n1 2.0\n"), "12 '2 Nuc 2.0'" + some);
    EXPECT_EQ(told("massage", "2,, 2.0\n"), "");
    EXPECT_EQ(told("guess=alter", "2 3\n2 Nuc 2.0\n"), "");
    EXPECT_EQ(prepare(job("# hf scrf=read", "\nmodifysph\n\n1 2.0\n\n", "Og 0 0 0\nOg 0 0 3\n")).notices,
              "11 '1 2.0'" + some);
    // Of three atoms of an element, where the last one is like the first.
    EXPECT_EQ(prepare(job("# hf scrf=read", "\nmodifysph\n\n1 2.0\n2 2.1\n3 2.0\n\n", "H 0 0 0\nH 0 0 .9\nH 0 .9 0\n"))
                  .notices,
              "12 '1 2.0'" + some + "13 '2 2.1'" + some + "14 '3 2.0'" + some);
}

TEST(make_ready, leaves_out_link_0_lines_that_name_a_file) {
    for (const char* key : {"chk", "OldChk", "schk", "rwf", "int", "d2e", "scr", "save", "kjob", "oldmatrix",
                            "oldrawmatrix", "errorsave"}) {
        EXPECT_EQ(prepare(std::string(" %").append(key).append(" = a\n") + job("# hf", "")).text,
                  ready("# hf force nosymm"))
            << key;
    }
    for (const char* line : {"%mem=1GB", "%NProcShared=4", "%nosave", "%CPU=0-3", "%checkpointing"}) {
        EXPECT_EQ(prepare(std::string(line).append("\n") + job("# hf", "")).text,
                  std::string(line).append("\n") + ready("# hf force nosymm"));
    }
}

TEST(make_ready, keeps_numbers_that_are_none_of_atoms) {
    EXPECT_EQ(prepare(job("# hf guess=alter", "\n1 2\n0\n\n", "H\nX 1 1.0\nH 1 0.74 2 90.0\n")).text,
              "# hf guess=alter force nosymm\n\nt\n\n0 1\n"
              "   H                0.00000000    0.00000000    0.00000000\n"
              "   H                0.74000000    0.00000000    0.00000000\n\n1 2\n0\n\n");
}

TEST(make_ready, leaves_the_connectivity_of_dummy_atoms_out) {
    const prepared found =
        prepare(job("# hf geom=connectivity", "\n 1 3 1.0\n 2 3 1.0\n 3\n\n", "H\nX 1 1.0\nH 1 0.74 2 90.0\n"));
    EXPECT_EQ(found.text,
              "# hf force nosymm\n\nt\n\n0 1\n"
              "   H                0.00000000    0.00000000    0.00000000\n"
              "   H                0.74000000    0.00000000    0.00000000\n\n");
    EXPECT_EQ(found.notices,
              "7 1 dummy atom served the construction and is left out\n"
              "1 the connectivity is left out: there is none, or its atom numbers count dummy atoms\n");
}

TEST(make_ready, tells_how_many_dummy_atoms_are_left_out) {
    EXPECT_EQ(prepare(job("# hf", "", "H\nX 1 1.0\nX 1 1.0 2 90.0\nH 1 0.74 2 90.0 3 90.0\n")).notices,
              "7 2 dummy atoms served the construction and are left out\n");
}

TEST(make_ready, refuses_sections_that_are_not_those_of_the_route) {
    const std::string basis = "H 0\n6-31G\n****\n\n";
    const struct {
        std::string text;
        const char* message;
    } rows[] = {
        {job("# hf/gen opt=modredundant", "\n" + basis),
         "m:11: expected the section of 'opt=modredundant', found '****'; take the keyword out, or give its section"},
        {job("# hf/gen opt=modredundant", "\nHe 0\n6-31G\n****\n\n"),
         "m:9: expected the section of 'opt=modredundant', found 'He 0'; take the keyword out, or give its section"},
        {job("# hf/gen geom=connectivity", "\n" + basis),
         "m:9: expected the connectivity that 'geom=connectivity' asks for, found 'H 0'; take the keyword out, or give "
         "its "
         "section"},
        {job("# hf geom=connectivity", "\n 1 3 1.0\n\n"),
         "m:9: expected the connectivity that 'geom=connectivity' asks for, found ' 1 3 1.0'; take the keyword out, or "
         "give its section"},
        {job("# hf geom=connectivity", "\n 0 2 1.0\n\n"),
         "m:9: expected the connectivity that 'geom=connectivity' asks for, found ' 0 2 1.0'; take the keyword out, or "
         "give its section"},
        {job("# hf geom=connectivity", "\n 1\n 2 1\n\n"),
         "m:10: expected the connectivity that 'geom=connectivity' asks for, found ' 2 1'; take the keyword out, or "
         "give its section"},
        {job("# hf geom=connectivity", "\n 1 2 single\n\n"),
         "m:9: expected the connectivity that 'geom=connectivity' asks for, found ' 1 2 single'; take the keyword out, "
         "or give its section"},
        {job("# hf freq=readanharm polar=rdfreq", "\nprint=all\n\n0.1\n\nmore\n\n"),
         "m:9: found 'print=all' after the molecule, and nobody can tell whether it belongs to "
         "'freq=readanharm'; take that keyword and its section out"},
        {job("# hf freq=(anharmonic,readanharm)", "\nprint=all\n\nmore\n\n"),
         "m:9: found 'print=all' after the molecule, and nobody can tell whether it belongs to "
         "'freq=(anharmonic,readanharm)'; take that keyword and its section out"},
        {job("# hf/gen freq=(anharmonic,readanharm)", "\nprint=all\n\n" + basis),
         "m:9: found 'print=all' after the molecule, and nobody can tell whether it belongs to "
         "'freq=(anharmonic,readanharm)'; take that keyword and its section out"},
        {job("# hf/gen trajectories=x", "\n0 0 0\n\n" + basis),
         "m:9: found '0 0 0' after the molecule, and nobody can tell whether it belongs to 'trajectories=x'; take that "
         "keyword and its sections out"},
        {job("# hf/gen admp=readvelocity", "\n0 0 0\n\n" + basis),
         "m:9: found '0 0 0' after the molecule, and nobody can tell whether it belongs to 'admp=readvelocity'; take "
         "that "
         "keyword and its sections out"},
        {job("# hf opt=modredundant scrf=read", "\neps=5.\n\n"),
         "m:9: found 'eps=5.' after the molecule, and nobody can tell whether it belongs to 'opt=modredundant'; take "
         "that "
         "keyword and its section out"},
        {job("# hf charge opt=modredundant", "\n0. 0. 5. 1.\n\n"),
         "m:9: found '0. 0. 5. 1.' after the molecule, and nobody can tell whether it belongs to 'opt=modredundant'; "
         "take "
         "that keyword and its section out"},
        {job("# hf charge opt=modredundant scrf=read", "\n0. 0. 5. 1.\n\n"),
         "m:9: found '0. 0. 5. 1.' after the molecule, and nobody can tell whether it belongs to 'opt=modredundant'; "
         "take that keyword and its section out"},
        {job("# hf/gen output=wfx", "\n" + basis),
         "m:9: found 'H 0' after the molecule, and nobody can tell whether it belongs to 'output=wfx'; take that "
         "keyword "
         "and its section out"},
        {job("# hf/gen output=wfx", "\n" + basis + "h2.wfx\n\nnote\n\n"),
         "m:9: found 'H 0' after the molecule, and nobody can tell whether it belongs to 'output=wfx'; take that "
         "keyword "
         "and its section out"},
        {job("# hf pop=nboread", "\n\n$NBO $END\n\n$NBO $END\n\n"),
         "m:10: found '$NBO $END' after the molecule, and nobody can tell whether it belongs to 'pop=nboread'; take "
         "that "
         "keyword and its section out"},
        {job("# hf/gen freq=(anharmonic,readanharm)", "\n\n" + basis),
         "m:9: found an empty section after the molecule, and nobody can tell whether it belongs to "
         "'freq=(anharmonic,readanharm)'; take that keyword and its section out"},
        {job("# hf/gen admp=readvelocity", "\n\n" + basis),
         "m:9: found an empty section after the molecule, and nobody can tell whether it belongs to "
         "'admp=readvelocity'; take that keyword and its sections out"},
        {job("# hf output=wfx", "\n" + basis),
         "m:11: expected the section of 'output=wfx', found '****'; take the keyword out, or give its section"},
        {job("# uff", "", "H-H_ 0 0 0\nH 0 0 .74\n"),
         "m:6: found an atom with a type for the force field 'uff', which cannot be kept; give the route of another "
         "method"},
        {job("# amber", "", "H-H_ 0 0 0\nH 0 0 .74\n"),
         "m:6: found an atom with a type for the force field 'amber', which cannot be kept; give the route of another "
         "method"},
        {job("# Dreiding", "", "H 0 0 0\nH-H_ 0 0 .74\n"),
         "m:7: found an atom with a type for the force field 'Dreiding', which cannot be kept; give the route of "
         "another method"},
        {job("# mm", "", "H-H_ 0 0 0\nH 0 0 .74\n"),
         "m:6: found an atom with a type for the force field 'mm', which cannot be kept; give the route of another "
         "method"},
        {job("# hf units=au charge", "\n0 0 5 1\n\n"),
         "m:1: 'charge' may have coordinates in the units of 'units=au'; give the whole input in angstrom"},
        {job("# hf/gen", "\n# from the web\n" + basis),
         "m:9: found '# from the web' after the molecule, which would be taken for the route; take the line out"},
        {job("# hf/gen", "\n1 3 0\n6-31G\n****\n\n", "H\nX 1 1.0\nH 1 0.74 2 90.0\n"),
         "m:10: found '1 3 0', whose atom numbers may count dummy atoms, which are left out; name the elements "
         "instead"},
        {job("# hf/gen", "\n1-2 0\n6-31G\n****\n\n", "H\nX 1 1.0\nH 1 0.74 2 90.0\n"),
         "m:10: found '1-2 0', whose atom numbers may count dummy atoms, which are left out; name the elements "
         "instead"},
        {job("# hf scrf=(pcm,read)", "\nmodifysph\n\n3 2.0\n\n", "H\nX 1 1.0\nH 1 0.74 2 90.0\n"),
         "m:12: found '3 2.0', whose atom numbers may count dummy atoms, which are left out; name the elements "
         "instead"},
        {job("# hf massage", "\n3 nuc 2.0\n\n", "H\nX 1 1.0\nH 1 0.74 2 90.0\n"),
         "m:10: found '3 nuc 2.0', whose atom numbers may count dummy atoms, which are left out; name the elements "
         "instead"},
        {job("# hf scrf=read", "\neps=2. ! ExtraSph\nExtraSph=1\n0. 0. 1. 2.\n\n"),
         "m:10: found 'ExtraSph=1', whose spheres are fixed in space and cannot be kept; take them out"},
        {job("# hf", "", "H 0 0 0\nH 0 0 10000\n"),
         "expected coordinates between -1000 and 10000 angstrom, found 10000.000000"},
        {job("# hf", "", "H 0 0 0\nH 0 0 -1000\n"),
         "expected coordinates between -1000 and 10000 angstrom, found -1000.000000"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(prepare(row.text).text, std::string(row.message) + "|standard error|2") << row.text;
    }
}

TEST(make_ready, changes_a_title_that_would_mislead) {
    const prepared found = prepare("# hf\n\nfirst\n  #2 of 3\n! #\n\n0 1\nH 0 0 0\nH 0 0 .74\n");
    EXPECT_EQ(found.text, "# hf force nosymm\n\nfirst\n-   #2 of 3\n! #\n\n0 1\n" + hydrogen + "\n");
    EXPECT_EQ(found.notices, "4 '- ' put before a line of the title, which would be taken for the route\n");
    EXPECT_EQ(prepare("# hf\n\n! none\n\n\n0 1\nH 0 0 0\nH 0 0 .74\n").text,
              "# hf force nosymm\n\n! none\nno title\n\n0 1\n" + hydrogen + "\n");
    EXPECT_EQ(prepare("# hf\n\n! none\n\nt\n\n0 1\nH 0 0 0\nH 0 0 .74\n").text,
              "# hf force nosymm\n\n! none\nt\n\n0 1\n" + hydrogen + "\n");
    const prepared empty = prepare("# hf\n\n\n\n0 1\nH 0 0 0\nH 0 0 .74\n");
    EXPECT_EQ(empty.text, "# hf force nosymm\n\nno title\n\n0 1\n" + hydrogen + "\n");
    EXPECT_EQ(empty.notices, "5 the title is empty; 'no title' takes its place\n");
}

TEST(make_ready, breaks_a_long_route_between_keywords) {
    const std::string words =
        "aaaaaaaaa bbbbbbbbb ccccccccc ddddddddd eeeeeeeee fffffffff ggggggggg hhhhhhhhh iiiiiiiii";
    const std::string found = prepare(job("#p " + words + " scf=(x y z) tight", "")).text;
    EXPECT_EQ(found, ready("#p " + words + "\nscf=(x y z) tight force nosymm"));
    EXPECT_EQ(prepare(found).text, found);
    const std::string quoted = "#p " + words + " external='a(  b)  c'";
    EXPECT_EQ(prepare(job(quoted + " tight", "")).text,
              ready("#p " + words + "\nexternal='a(  b)  c' tight force nosymm"));
    const std::string bracket = "scf=(" + std::string(200, 'x') + " " + std::string(200, 'y') + ")";
    EXPECT_EQ(prepare(job("# " + bracket, "")).text, ready("# " + bracket + "\nforce nosymm"));
    EXPECT_EQ(prepare(job("# " + bracket + "-" + std::string(100, 'z'), "")).text,
              "expected a line of at most 500 characters in the route, found '# scf=(" + std::string(53, 'x') +
                  "... (450 more characters)'|standard error|2");
}

TEST(make_ready, breaks_a_route_before_a_long_quotation_at_its_end) {
    const std::string quoted = "external='run.sh " + std::string(100, 'x') + "'";
    EXPECT_EQ(prepare(job("# hf force nosymm " + quoted, "")).text, ready("# hf force nosymm\n" + quoted));
}

TEST(make_ready, leaves_no_text_that_would_be_another_input_when_it_is_written) {
    const auto written = [](const gaussian::ready_input& input) {
        std::string text;
        const std::string error = stopped_with([&] { text = gaussian::write_input(input); });
        return error == "no error" ? text : error;
    };
    gaussian::ready_input plain;
    plain.route = "#p " + std::string(100, 'x');
    plain.title = {"t"};
    plain.atoms.numbers = {2};
    plain.atoms.positions = Eigen::Matrix3Xd::Zero(3, 1);
    EXPECT_EQ(written(plain), plain.route +
                                  "\n\nt\n\n0 1\n"
                                  "   He               0.00000000    0.00000000    0.00000000\n\n");
    gaussian::ready_input broken = plain;
    broken.route = "# a " + std::string(96, 'x');  // 100 characters
    EXPECT_TRUE(written(broken).starts_with(broken.route + "\n\n"));
    broken.route += "x";
    EXPECT_TRUE(written(broken).starts_with("# a\n" + std::string(97, 'x') + "\n\n"));
    gaussian::ready_input wrong = plain;
    wrong.route = "hf";
    EXPECT_EQ(written(wrong), "expected a route, which begins with '#', found 'hf'|standard error|2");
    wrong = plain;
    wrong.title = {"t\n#p"};
    EXPECT_EQ(written(wrong), "expected one line in the title, found 't\\n#p'|standard error|2");
    wrong = plain;
    wrong.title = {" #p"};
    EXPECT_EQ(written(wrong),
              "expected no line after the route that begins with '#', which would be taken for the route, in the "
              "title, found ' #p'|standard error|2");
    wrong = plain;
    wrong.sections = {{0, {"# more"}}};
    EXPECT_EQ(written(wrong),
              "expected no line after the route that begins with '#', which would be taken for the route, in the "
              "sections after the molecule, found '# more'|standard error|2");
    wrong = plain;
    wrong.link0 = {"%mem=1GB\n#p"};
    EXPECT_EQ(written(wrong), "expected one line in the Link 0 lines, found '%mem=1GB\\n#p'|standard error|2");
    wrong = plain;
    wrong.atoms.positions(1, 0) = std::nan("");
    EXPECT_EQ(written(wrong), "expected coordinates between -1000 and 10000 angstrom, found nan|standard error|2");
}

TEST(make_ready, tells_what_fixed_in_space) {
    EXPECT_EQ(prepare(job("# hf field=x+10", "")).in_space, "field=x+10");
    EXPECT_EQ(prepare(job("# hf units=au field=x+10", "")).in_space, "field=x+10");
    EXPECT_TRUE(prepare(job("# hf units=au scrf=read", "\neps=5.\n\n")).text.ends_with("\n\neps=5.\n\n"));
    EXPECT_EQ(prepare(job("# hf", "")).in_space, "");
}

TEST(make_ready, takes_another_route) {
    const std::string basis = "H 0\n6-31G\n****\n\n";
    const std::string text =
        job("# hf/gen opt=modredundant geom=connectivity", "\n 1 2 1.0\n 2\n\nB 1 2 F\n\n" + basis);
    EXPECT_EQ(prepare(text, "#p b3lyp/sto-3g opt").text, ready("#p b3lyp/sto-3g force nosymm"));
    EXPECT_EQ(prepare(text, "#p b3lyp/sto-3g opt").notices,
              "1 'opt=modredundant' left out: the geometry is taken as it is, make sure that it is optimised already\n"
              "12 'B 1 2 F' left out, which freezes or scans coordinates: make sure that the geometry is a stationary "
              "point\n"
              "14 the sections after the molecule are left out: the new route asks for none\n");
    EXPECT_EQ(prepare(text, "#p b3lyp/gen").text, ready("#p b3lyp/gen force nosymm", basis));
    EXPECT_EQ(prepare(job("# hf", ""), "# mp2 symm").notices, "0 'symm' left out: 'nosymm' takes its place\n");
    EXPECT_EQ(prepare(text, "#p b3lyp/gen geom=connectivity").text,
              ready("#p b3lyp/gen geom=connectivity force nosymm", " 1 2 1.0\n 2\n\n" + basis));
    EXPECT_EQ(prepare(job("# hf", ""), "# hf/gen").text,
              "the new route: 'hf/gen' needs a section after the molecule, found none; prepare the input of the job "
              "instead, or give a route that needs none with --route, and put keyword and section into the prepared "
              "input by hand|standard error|2");
    const auto refused = [](const char* asked, const char* found) {
        return std::string("the new route: expected as many sections after the molecule as its keywords need, ")
            .append(asked)
            .append(", found ")
            .append(found)
            .append("; give the input the sections of this route|standard error|2");
    };
    // What goes with a job type is no section of the source's own route; what stands at the end unasked stays there.
    EXPECT_EQ(prepare(job("# hf/gen opt=modredundant", "\nB 1 2 F\n\n" + basis + "unasked\n\n"), "# mp2/gen").text,
              ready("# mp2/gen force nosymm", basis + "unasked\n\n"));
    const std::string solvent = "eps=4.9\n\n";
    EXPECT_EQ(prepare(job("# hf scrf=read", "\n" + solvent), "# mp2 scrf=(pcm,read)").text,
              ready("# mp2 scrf=(pcm,read) force nosymm", solvent));
    EXPECT_EQ(prepare(job("# hf scrf=read", "\n" + solvent), "# mp2/gen scrf=read").text, refused("2", "1"));
    EXPECT_EQ(prepare(job("# hf scrf=read", "\n\n" + solvent), "# mp2/gen scrf=read").text, refused("2", "1"));
    EXPECT_EQ(prepare(job("# hf/gen scrf=read", "\n" + basis + solvent), "# mp2/gen scrf=read").text,
              ready("# mp2/gen scrf=read force nosymm", basis + solvent));
    EXPECT_EQ(prepare(job("# hf/gen scrf=read", "\n" + basis + solvent), "# mp2 scrf=read").text, refused("1", "2"));
    EXPECT_EQ(prepare(job("# hf", "\n" + basis), "# mp2/gen").text, ready("# mp2/gen force nosymm", basis));
    EXPECT_EQ(prepare(job("# hf/gen", "\n" + basis + "note\n"), "# mp2/gen").text,
              ready("# mp2/gen force nosymm", basis + "note\n\n"));
    EXPECT_EQ(
        prepare(job("# hf/gen geom=connectivity", "\n 1 2 1.0\n 2\n\n" + basis), "# hf/genecp geom=connectivity").text,
        refused("2", "1"));
    EXPECT_EQ(prepare(job("# g4", ""), "# hf/sto-3g").text, ready("# hf/sto-3g force nosymm"));
    EXPECT_EQ(prepare(job("# uff", "", "H-H_ 0 0 0\nH 0 0 .74\n"), "# hf").text, ready("# hf force nosymm"));
    EXPECT_EQ(prepare(job("# hf", ""), "hf").text,
              "the new route: expected a route, which begins with '#', found 'hf'|standard error|2");
}

TEST(make_ready, takes_a_molecule_that_was_in_no_input) {
    gaussian::molecule atoms;
    atoms.numbers = {1, 1};
    atoms.positions = Eigen::Matrix3Xd::Zero(3, 2);
    atoms.positions(2, 1) = 0.74;
    std::vector<gaussian::notice> notices;
    const auto made = [&](std::string_view route, std::string_view title) {
        std::string text;
        const std::string error = stopped_with(
            [&] { text = gaussian::write_input(gaussian::make_ready("a.log", 5, route, title, atoms, notices)); });
        return error == "no error" ? text : error;
    };
    EXPECT_EQ(made("#p hf opt freq geom=(check,connectivity)", " t "), ready("#p hf force nosymm"));
    EXPECT_EQ(made("# hf freq=noraman cphf=noread", "t"), ready("# hf cphf=noread force nosymm"));
    EXPECT_EQ(made("# hf pop=nboread output=wfn nmr", "t"), ready("# hf force nosymm"));
    EXPECT_EQ(notices.size(), 3U);
    EXPECT_EQ(made("# hf", "#"), "# hf force nosymm\n\n- #\n\n0 1\n" + hydrogen + "\n");
    EXPECT_EQ(made("# hf", " "), "# hf force nosymm\n\nno title\n\n0 1\n" + hydrogen + "\n");
    EXPECT_EQ(
        made("# hf/gen", "t"),
        "a.log:5: 'hf/gen' needs a section after the molecule, found none; prepare the input of the job instead, or "
        "give a route that needs none with --route, and put keyword and section into the prepared input by "
        "hand|standard error|2");
    EXPECT_EQ(made("# hf/chkbasis", "t"),
              "a.log:5: 'hf/chkbasis' reads a checkpoint file, which the jobs will not have; give a route without it "
              "with --route|standard error|2");
    atoms.numbers = {1, 119};
    EXPECT_EQ(made("# hf", "t"), "symbol_of: expected an atomic number from 1 to 118, found 119|standard error|2");
    atoms.numbers = {1};
    EXPECT_EQ(made("# hf", "t"), "found 2 positions, expected 1|standard error|2");
}

}  // namespace
