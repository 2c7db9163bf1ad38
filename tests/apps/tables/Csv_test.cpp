// SPDX-License-Identifier: MIT
#include "apps/tables/Csv.h"

#include "apps/tables/CsvField.h"
#include "tests/apps/ScratchFile.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace {

using apps::test::ScratchFolder;
using tables::CsvReader;
using tables::InputError;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

using Rows = std::vector<std::vector<std::string>>;

Rows AllRows(CsvReader& reader)
{
    Rows rows;
    while (reader.Next()) {
        auto& row = rows.emplace_back();
        for (std::size_t i = 0; i < reader.Columns().size(); ++i)
            row.emplace_back(reader.Field(i));
    }
    return rows;
}

Rows RowsOf(const std::string& content)
{
    const ScratchFolder folder;
    CsvReader reader(folder.Write("rows.csv", content));
    return AllRows(reader);
}

// The reader's error about the content, from the file name on.
std::string ComplaintAbout(const std::string& content)
{
    const ScratchFolder folder;
    const std::string path = folder.Write("rows.csv", content);
    try {
        CsvReader reader(path);
        AllRows(reader);
    } catch (const InputError& error) {
        return std::string(error.what()).substr(path.size() - std::string("rows.csv").size());
    }
    return {};
}

TEST(Csv, ReadsTheSameRowsWhateverTheDialect)
{
    const Rows expected = {
        {"1",  "two"},
        {"-3", ""   }
    };
    const std::pair<const char*, const char*> cases[] = {
        {"a,b\n1,two\n-3,\n",                      "comma and LF"          },
        {"a;b\n1;two\n-3;\n",                      "semicolon"             },
        {"a,b\r\n1,two\r\n-3,\r\n",                "CR LF"                 },
        {"\xEF\xBB\xBF"
         "a,b\n1,two\n-3,\n",             "byte-order mark"       },
        {"a,b\n1,two\n-3,",                        "no line end at the end"},
        {"\n\na,b\n\n1,two\n  \n-3,\n\n",          "blank lines"           },
        {"a,b\n 1 ,\ttwo\n-3, \n",                 "padding"               },
        {"\"a\",\"b\"\n\"1\",\"two\"\n-3,\"\"",    "quotes"                },
        {"a,b,\n1,two\n-3,\n",                     "header ends in a comma"},
        {"a,b\n1,two,\n-3,,\n",                    "rows end in a comma"   },
        {"a\tb\n1\ttwo\n-3\t\n",                   "TAB"                   },
        {"# by hand\na,b\n #1,one\n1,two\n#\n-3,", "comments"              },
        {"\xEF\xBB\xBF# by hand\na,b\n1,two\n-3,", "mark and comment"      },
        {"sep=;\na;b\n1;two\n-3;\n",               "declared separator"    },
        {"a,b\n1,two\n-3,\n,\n \t;;\n",            "rows of separators"    },
    };
    for (const auto& [content, why] : cases)
        EXPECT_EQ(RowsOf(content), expected) << why;
}

TEST(Csv, QuotedFieldsMayContainSeparatorsAndQuotes)
{
    EXPECT_EQ(RowsOf("a,b\n\"x, \"\"y\"\"\", \" z \"\n"), (Rows{
                                                              {"x, \"y\"", " z "}
    }));
}

TEST(Csv, ASeparatorInsideAQuotedNameIsIgnored)
{
    EXPECT_EQ(RowsOf("\"a;b\",c\n1,2\n"), (Rows{
                                              {"1", "2"}
    }));
}

TEST(Csv, BlanksSeparateWhereNothingElseDoes)
{
    const Rows expected = {
        {"P1",      "4.5"},
        {"Point 2", "-3" }
    };
    for (const char* content :
         {"name N\nP1 4.5\n\"Point 2\" -3\n", "  name   N  \n P1   4.5\n\t\"Point 2\"\t -3 \n",
          "name \"N\"\nP1\t4.5\n\"Point 2\"\t\"-3\"\n"})
        EXPECT_EQ(RowsOf(content), expected) << content;
}

TEST(Csv, AUnitBehindABlankBelongsToTheNameBeforeIt)
{
    const ScratchFolder folder;
    CsvReader reader(folder.Write("rows.csv", "N [m] E (m) name\n1 2 P\n"));
    EXPECT_THAT(reader.Columns(), ElementsAre("N [m]", "E (m)", "name"));
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(reader.Field(2), "P");
}

TEST(Csv, AWordThatIsNoWholeUnitIsANameOfItsOwn)
{
    const ScratchFolder folder;
    const CsvReader reader(folder.Write("rows.csv", "[mm] N [mm (cm E []\n"));
    EXPECT_THAT(reader.Columns(), ElementsAre("[mm]", "N", "[mm", "(cm", "E", "[]"));
}

TEST(Csv, ReadsATableOfOneColumn)
{
    EXPECT_EQ(RowsOf("name\nP 1\nP2\n"), (Rows{{"P 1"}, {"P2"}}));
}

TEST(Csv, ATabInFrontOfARowLeavesItsFirstFieldBlank)
{
    EXPECT_EQ(RowsOf("a\tb\n\t5\n"), (Rows{
                                         {"", "5"}
    }));
}

// TABs separate, so that names and texts may contain blanks.
TEST(Csv, BlanksDoNotSeparateBesideOthers)
{
    EXPECT_EQ(RowsOf("point name\tN\nP 1\t5\n"), (Rows{
                                                     {"P 1", "5"}
    }));
}

TEST(Csv, TheFirstRowDecidesBetweenSeparatorsInTheHeader)
{
    EXPECT_EQ(RowsOf("a, plain;b\n1;2\n3;4,5\n"), (Rows{
                                                      {"1", "2"  },
                                                      {"3", "4,5"}
    }));
    EXPECT_EQ(RowsOf("a;b,c\n1,2\n"), (Rows{
                                          {"1", "2"}
    }));
    for (const char* const rows : {"a,b;c;\n1;2\n", "a,b;c;\n1;2;\n"})
        EXPECT_EQ(RowsOf(rows), (Rows{
                                    {"1", "2"}
        }))
            << rows;
    EXPECT_EQ(RowsOf("a,b;c\n"), Rows{});
}

TEST(Csv, ATableThatCouldBeSplitInTwoWaysIsRefused)
{
    constexpr const char* kTwoWays = "rows.csv:1: the header could be separated by commas or by "
                                     "semicolons, and more than one of "
                                     "them divide the first row into as many fields; put names "
                                     "that contain a separator in quotes";
    EXPECT_EQ(ComplaintAbout("a,b;c\n1,2;3\n"), kTwoWays);
    EXPECT_THAT(ComplaintAbout("a;b,c\n1;2,5;3,4\n"), HasSubstr("none of them divides"));
    EXPECT_THAT(ComplaintAbout("a,b;c\n1;2;3;\n"), HasSubstr("none of them divides"));
}

TEST(Csv, HintsAtWhatIsWrongWithTheFile)
{
    constexpr const char* kComma = " (decimal comma? The decimal sign is a point)";
    const std::pair<std::string, std::string> cases[] = {
        {"N,E\n1,5,2,5\n",        std::string("4 fields where the header names 2 columns") + kComma},
        {"name,N,E\nP,1,5,2\n",   std::string("4 fields where the header names 3 columns") + kComma},
        {"N,E\n-1,5,+2,5\n",      std::string("4 fields where the header names 2 columns") + kComma},
        {"N,E\n1.5,2,3\n",        "3 fields where the header names 2 columns"                      },
        {"N,E\n,-,2\n",           "3 fields where the header names 2 columns"                      },
        {"N,E\n\"\"\n",           "1 fields where the header names 2 columns"                      },
        {"N E\n1,2\n",            "(separated by commas, but the header by blanks?)"               },
        {"N;E\n1\t2\n",           "(separated by TABs, but the header by semicolons?)"             },
        {"\x1F\x8B\b",            "rows.csv: is compressed (gzip)? Unpack it first"                },
        {"PK\x03\x04xx",
         "rows.csv: is compressed (zip)? Unpack it first; save a spreadsheet as CSV"               },
        {"\xFD"
         "7zXZ",         "rows.csv: is compressed (xz)? Unpack it first"                  },
        {"\xFF\xFEN",             "rows.csv: is not UTF-8 (UTF-16?): save it as UTF-8"             },
        {"\xFE\xFF"
         "N",            "rows.csv: is not UTF-8 (UTF-16?): save it as UTF-8"             },
        {"\xD0\xCF\x11\xE0",      "rows.csv: is a spreadsheet: save it as CSV"                     },
        {std::string("N\0,\0E\0", 6),                                                                "rows.csv: is not UTF-8 (UTF-16?): save it as UTF-8"},
        {"N,E\r1,2\r",                       "the line contains NUL or CR characters; save the file as plain text "
                       "with LF or CR LF at the end of each line"                                                                            },
        {"1,2\n3,4\n",                       "the first line must name the columns, but consists of numbers"},
        {"# N E\n1 2\n",                       "but consists of numbers; lines that start with # are not read"                                                                          },
    };
    for (const auto& [content, hint] : cases)
        EXPECT_THAT(ComplaintAbout(content), EndsWith(hint));
}

TEST(Csv, ARowReadAheadKeepsItsLineAndItsError)
{
    const ScratchFolder folder;
    const std::string endless(CsvReader::kLongestLine + 1, 'x');
    CsvReader reader(folder.Write("rows.csv", "# a\n\"a\";b,c\n\n1;2\n" + endless + "\n3;4\n"));
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(reader.Line(), 4U);
    EXPECT_EQ(reader.Number(1), 2.0);
    EXPECT_THROW(reader.Next(), InputError);
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(reader.Number(1), 4.0);
    EXPECT_FALSE(reader.Next());
}

TEST(Csv, ReportsTheProblemAndTheLine)
{
    const std::pair<const char*, const char*> cases[] = {
        {"",                "rows.csv:1: the file is empty; its first line must name the columns"},
        {"\n\n",            "rows.csv:1: the file is empty; its first line must name the columns"},
        {"a,b\n1,2\n\n3\n", "rows.csv:4: 1 fields where the header names 2 columns"              },
        {"a,b\n1,x,y\n",    "rows.csv:2: 3 fields where the header names 2 columns"              },
        {"a,b\n1,\"2\n",    "rows.csv:2: a quoted field is not closed on its line"               },
        {"a,b\n\"1\"x,2\n", "rows.csv:2: text follows a quoted field"                            },
        {"\"a,b\n1,2\n",    "rows.csv:1: a quoted field is not closed on its line"               },
        {"sep=;\n",         "rows.csv:1: the file is empty; its first line must name the columns"},
    };
    for (const auto& [content, expected] : cases)
        EXPECT_EQ(ComplaintAbout(content), expected);
}

TEST(Csv, NamesTheLineOfAHeaderBelowBlankLines)
{
    const ScratchFolder folder;
    const CsvReader reader(folder.Write("rows.csv", "\n \na,b,b\n1,2,3\n"));
    for (const char* const name : {"b", "c"}) {
        try {
            reader.Require(name);
            ADD_FAILURE() << name;
        } catch (const InputError& error) {
            EXPECT_THAT(error.what(), HasSubstr("rows.csv:3: ")) << name;
        }
    }
}

TEST(Csv, AMissingFileIsNamed)
{
    const ScratchFolder folder;
    try {
        const CsvReader reader(folder.Path("none.csv"));
        FAIL() << "opened";
    } catch (const InputError& error) {
        EXPECT_THAT(error.what(), EndsWith("none.csv: No such file or directory"));
    }
}

TEST(Csv, AFolderIsNotAFile)
{
    const ScratchFolder folder;
    EXPECT_THROW(CsvReader(folder.Path("")), InputError);
}

TEST(Csv, ContinuesAfterABadRow)
{
    const ScratchFolder folder;
    CsvReader reader(folder.Write("rows.csv", "a,b\n1,2\n3\n5,6\n"));
    ASSERT_TRUE(reader.Next());
    EXPECT_THROW(reader.Next(), InputError);
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(reader.Number(1), 6.0);
    EXPECT_EQ(reader.Line(), 4U);
    EXPECT_FALSE(reader.Next());
}

TEST(Csv, ContinuesAfterALineThatIsTooLong)
{
    const ScratchFolder folder;
    const std::string endless(5 * CsvReader::kLongestLine, 'x');
    CsvReader reader(folder.Write("rows.csv", "a,b\n" + endless + "\n5,6\n" + endless));
    EXPECT_THROW(reader.Next(), InputError);
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(reader.Field(0), "5");
    EXPECT_EQ(reader.Line(), 3U);
    EXPECT_THROW(reader.Next(), InputError);
    EXPECT_FALSE(reader.Next());
}

TEST(Csv, AcceptsALineOfMaximalLength)
{
    const std::string longest(CsvReader::kLongestLine - 2, 'x');
    EXPECT_EQ(RowsOf("a,b\n" + longest + ",y\n1,2\n"), (Rows{
                                                           {longest, "y"},
                                                           {"1",     "2"}
    }));
}

TEST(Csv, ColumnsAreFoundByName)
{
    const ScratchFolder folder;
    const CsvReader reader(folder.Write("rows.csv", "h,N,N,E\n"));
    EXPECT_EQ(reader.Find("E"), 3U);
    EXPECT_EQ(reader.Find("e"), std::nullopt);
    EXPECT_EQ(reader.Require("h"), 0U);
    EXPECT_THROW(reader.Find("N"), InputError) << "appears twice";
    EXPECT_THROW(reader.Require("x"), InputError) << "is missing";
}

TEST(Csv, AnInvalidNumberIsReportedWithColumnAndText)
{
    const ScratchFolder folder;
    CsvReader reader(folder.Write("rows.csv", "a;h\n1;112,5\n"));
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(reader.Number(0), 1.0);
    try {
        (void)reader.Number(1);
        FAIL() << "taken";
    } catch (const InputError& error) {
        EXPECT_THAT(error.what(), EndsWith("rows.csv:2: h is '112,5', not a finite number (decimal "
                                           "comma? The decimal sign is a point)"));
    }
}

TEST(Csv, RejectsAFileAboveTheLimitWithoutReadingOn)
{
    const ScratchFolder folder;
    std::string content = "a,b\n";
    while (content.size() < 3 << 20)
        content += "1,2\n";
    const std::string path = folder.Write("rows.csv", content);
    CsvReader whole(path, content.size());
    EXPECT_EQ(AllRows(whole).size(), (content.size() - 4) / 4) << "the limit itself is allowed";

    CsvReader limited(path, 2 << 20);
    try {
        AllRows(limited);
        FAIL() << "read";
    } catch (const InputError& error) {
        EXPECT_THAT(error.what(), EndsWith("rows.csv: is larger than 2 MiB"));
    }
    EXPECT_TRUE(limited.Failed());
    EXPECT_LE(limited.BytesRead(), (2 << 20) + (1 << 16)) << "one block beyond the limit at most";
}

TEST(Csv, ATextThatIsNoNumberIsShownWithoutAHintOrItsEnd)
{
    const std::string endless(41, 'x');
    const std::pair<std::string, std::string> cases[] = {
        {"x,5",             "x,5"                    },
        {endless.substr(1), endless.substr(1)        },
        {endless,           endless.substr(1) + "..."},
    };
    for (const auto& [text, shown] : cases) {
        const ScratchFolder folder;
        CsvReader reader(folder.Write("rows.csv", "a;h\n1;" + text + "\n"));
        ASSERT_TRUE(reader.Next());
        try {
            (void)reader.Number(1);
            ADD_FAILURE() << text;
        } catch (const InputError& error) {
            EXPECT_THAT(error.what(), EndsWith(": h is '" + shown + "', not a finite number"));
        }
    }
}

TEST(Csv, ABadRowThatIsReadAheadIsReportedInItsTurn)
{
    const ScratchFolder folder;
    const std::string endless(CsvReader::kLongestLine + 1, 'x');
    CsvReader reader(folder.Write("rows.csv", "a;b,c\n" + endless + "\n1;2\n"));
    EXPECT_THROW(reader.Next(), InputError);
    ASSERT_TRUE(reader.Next());
    EXPECT_EQ(reader.Number(1), 2.0);
    EXPECT_EQ(reader.Line(), 3U);
    EXPECT_FALSE(reader.Next());
}

TEST(Csv, AFieldIsWrittenSoThatItIsReadBack)
{
    constexpr std::pair<const char*, const char*> cases[] = {
        {"P 1",     "P 1"            },
        {"",        ""               },
        {" x",      "\" x\""         },
        {"x\t",     "\"x\t\""        },
        {"#1",      "\"#1\""         },
        {"1#",      "1#"             },
        {"a,b",     "\"a,b\""        },
        {"a;b",     "\"a;b\""        },
        {"a \"b\"", "\"a \"\"b\"\"\""},
    };
    for (const auto& [text, written] : cases) {
        fmt::memory_buffer row;
        tables::AppendField(row, text);
        EXPECT_EQ(std::string(row.data(), row.size()), written);
        row.push_back(',');
        EXPECT_EQ(RowsOf("a,b\n" + std::string(row.data(), row.size()) + "1\n"), (Rows{
                                                                                     {text, "1"}
        }));
    }
}

RC_GTEST_PROP(Csv, AnyContentIsReadOrAnInputError, (const std::string& content))
{
    const ScratchFolder folder;
    try {
        CsvReader reader(folder.Write("rows.csv", "a,b\n" + content));
        for (;;) {
            try {
                if (!reader.Next()) break;
                RC_ASSERT(reader.Field(1).size() <= content.size());
            } catch (const InputError&) {
                RC_ASSERT(reader.Line() > 1U);
            }
        }
    } catch (const InputError& error) {
        RC_FAIL(error.what());
    }
}

// Quoting every field and writing it back yields the same fields, whatever they contain.
RC_GTEST_PROP(Csv, QuotedTextIsReadBackUnchanged, (std::vector<std::string> fields))
{
    RC_PRE(!fields.empty());
    std::string header;
    std::string row;
    for (std::string& field : fields) {
        std::erase_if(field, [](char c) { return c == '\n'; });
        if (!row.empty()) {
            header += ';';
            row += ';';
        }
        header += 'c';
        row += '"';
        for (const char c : field)
            row += c == '"' ? "\"\"" : std::string(1, c);
        row += '"';
    }
    if (fields.size() == 1) header += ';'; // otherwise the separator would be unknown
    RC_ASSERT(RowsOf(header + '\n' + row + '\n') == Rows{fields});
}

} // namespace
