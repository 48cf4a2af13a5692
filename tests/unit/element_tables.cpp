#include <gtest/gtest.h>

#include "element/element.hpp"
#include "support.hpp"

using namespace displacement_generator;

namespace {

struct row {
    int number;
    const char* symbol;
    double mass;
};

// Every row of both tables beside its atomic number. Of the number 0 there is no mass.
// clang-format off
constexpr row rows[] = {
    {0, "X ", 0.0}, {1, "H ", 1.007825037}, {2, "He", 4.00260325}, {3, "Li", 7.0160045}, {4, "Be", 9.0121825},
    {5, "B ", 11.0093053}, {6, "C ", 12.0}, {7, "N ", 14.003074008}, {8, "O ", 15.99491464},
    {9, "F ", 18.99840325}, {10, "Ne", 19.9924391}, {11, "Na", 22.9897697}, {12, "Mg", 23.985045},
    {13, "Al", 26.9815413}, {14, "Si", 27.9769284}, {15, "P ", 30.9737634}, {16, "S ", 31.9720718},
    {17, "Cl", 34.968852729}, {18, "Ar", 39.9623831}, {19, "K ", 38.9637079}, {20, "Ca", 39.9625907},
    {21, "Sc", 44.9559136}, {22, "Ti", 47.9479467}, {23, "V ", 50.9439625}, {24, "Cr", 51.9405097},
    {25, "Mn", 54.9380463}, {26, "Fe", 55.9349393}, {27, "Co", 58.9331978}, {28, "Ni", 57.9353471},
    {29, "Cu", 62.9295992}, {30, "Zn", 63.9291454}, {31, "Ga", 68.9255809}, {32, "Ge", 73.9211788},
    {33, "As", 74.9215955}, {34, "Se", 78.96}, {35, "Br", 78.9183361}, {36, "Kr", 83.9115064},
    {37, "Rb", 84.9117}, {38, "Sr", 87.9056}, {39, "Y ", 88.9054}, {40, "Zr", 89.9043}, {41, "Nb", 92.906},
    {42, "Mo", 97.9055}, {43, "Tc", 98.9063}, {44, "Ru", 101.9037}, {45, "Rh", 102.9048},
    {46, "Pd", 105.9032}, {47, "Ag", 106.90509}, {48, "Cd", 113.9036}, {49, "In", 114.9041},
    {50, "Sn", 117.9018}, {51, "Sb", 120.9038}, {52, "Te", 129.9067}, {53, "I ", 126.9004},
    {54, "Xe", 131.9042}, {55, "Cs", 133.9051}, {56, "Ba", 137.905}, {57, "La", 138.9061},
    {58, "Ce", 139.9053}, {59, "Pr", 140.9074}, {60, "Nd", 141.9075}, {61, "Pm", 0.0}, {62, "Sm", 151.9195},
    {63, "Eu", 152.9209}, {64, "Gd", 157.9241}, {65, "Tb", 158.925}, {66, "Dy", 163.9288},
    {67, "Ho", 164.9303}, {68, "Er", 165.9304}, {69, "Tm", 168.9344}, {70, "Yb", 173.939},
    {71, "Lu", 174.9409}, {72, "Hf", 179.9468}, {73, "Ta", 180.948}, {74, "W ", 183.951}, {75, "Re", 186.956},
    {76, "Os", 189.9586}, {77, "Ir", 192.9633}, {78, "Pt", 194.9648}, {79, "Au", 196.9666},
    {80, "Hg", 201.9706}, {81, "Tl", 204.9745}, {82, "Pb", 207.9766}, {83, "Be", 208.9804},
    {84, "Po", 208.9825}, {85, "At", 210.9875}, {86, "Rn", 222.0175}, {87, "Fr", 223.0198},
    {88, "Ra", 226.0254}, {89, "Ac", 227.0278}, {90, "Th", 232.0382}, {91, "Pa", 231.0359},
    {92, "U ", 238.0508}, {93, "Np", 237.048}, {94, "Ru", 242.0587}, {95, "Am", 243.0614},
    {96, "Cm", 246.0674}, {97, "Bk", 247.0702}, {98, "Cf", 249.0748}, {99, "Es", 252.0829},
    {100, "Fm", 252.0827},
};
// clang-format on

TEST(tables, have_the_symbol_and_the_mass_of_every_atomic_number) {
    int number = 0;
    for (const row& tested : rows) {
        SCOPED_TRACE(tested.symbol);
        EXPECT_EQ(tested.number, number++);
        EXPECT_EQ(std::string_view(element::atom(tested.number)), tested.symbol);
        if (tested.number != 0) {
            EXPECT_EQ(element::mass(tested.number), tested.mass);
        }
    }
    EXPECT_EQ(number, 101);
    EXPECT_EQ(element::mass(101), 255.0906);
    for (number = 102; number <= 118; ++number) {
        EXPECT_EQ(element::mass(number), 0.0) << number;
    }
}

TEST(tables, have_no_further_rows) {
    EXPECT_EQ(element::atom.lower(), 0);
    EXPECT_EQ(element::atom.upper(), 100);
    EXPECT_EQ(element::mass.lower(), 1);
    EXPECT_EQ(element::mass.upper(), 118);
    EXPECT_EQ(support::stopped_with([] { static_cast<void>(element::atom(101)); }),
              "array 'atom': index 101 is outside 0..100|standard error|2");
    EXPECT_EQ(support::stopped_with([] { static_cast<void>(element::mass(0)); }),
              "array 'mass': index 0 is outside 1..118|standard error|2");
}

}  // namespace
