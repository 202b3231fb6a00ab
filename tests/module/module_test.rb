# Tests of the Ruby extension Pellago_algorithm.
#
# Loading happens once per process and touches the user's Library, so every scenario runs in a
# child ruby of its own, with HOME in a temporary folder and the built module on its load path
# (PELLAGO_RUBY_DIR). The child returns its findings through a Marshal file.
#
# Environment: PELLAGO_RUBY_DIR (folder of Pellago_algorithm.so), PELLAGO_CLI (the pellago
# program, for comparing merges), PELLAGO_SOURCE_DIR (the repository).

require "minitest/autorun"
require "date"
require "fileutils"
require "open3"
require "rbconfig"
require "tmpdir"

RUBY_DIR = ENV.fetch("PELLAGO_RUBY_DIR")
CLI = ENV.fetch("PELLAGO_CLI")
SOURCE_DIR = ENV.fetch("PELLAGO_SOURCE_DIR")
DATA_DIR = File.join(__dir__, "data")
HELPERS = File.join(__dir__, "child_helpers.rb")
MAKER_FOLDER = "Library/Application Support/Tarnwick".freeze
# Plain exception messages, without the hints that Ruby 3.1 appends to NameError's.
RUBY_OPTIONS = ["--disable=error_highlight,did_you_mean", "-I", RUBY_DIR, "-r", HELPERS].freeze

# Starts child rubies in a fresh temporary folder per test.
module ChildRuby
  def setup
    @tmp = Dir.mktmpdir("pellago-module")
  end

  def teardown
    FileUtils.rm_rf(@tmp)
  end

  # A home folder whose Library is :none, :bare (no "Application Support"), :ready, :existing
  # (maker folder already made, with a file in it) or :blocked (a plain file in its place).
  def home(library = :ready)
    home = File.join(@tmp, "home-#{library}")
    FileUtils.mkdir_p(File.join(home, { none: "", bare: "Library", existing: MAKER_FOLDER }.fetch(
      library, "Library/Application Support")))
    File.write(File.join(home, MAKER_FOLDER, "keep.txt"), "kept") if library == :existing
    File.write(File.join(home, MAKER_FOLDER), "in the way") if library == :blocked
    home
  end

  # Runs `script` in `ruby -I RUBY_DIR -r child_helpers -e` and returns its last value. Its
  # standard error is kept in @stderr.
  def in_child(script, home: self.home)
    result = File.join(@tmp, "result")
    program = "result = begin\n#{script}\nend\nFile.binwrite(#{result.inspect}, Marshal.dump(result))\n"
    _out, @stderr, status = Open3.capture3({ "HOME" => home }, RbConfig.ruby, *RUBY_OPTIONS,
                                           "-e", program, chdir: @tmp)
    assert status.success?, "child ruby failed:\n#{@stderr}"
    Marshal.load(File.binread(result))
  end

  def data(name)
    File.join(DATA_DIR, name)
  end

  def output
    File.join(@tmp, "out.xml")
  end
end

class ModuleLoadingTest < Minitest::Test
  include ChildRuby

  FRAME_RATES_INSPECTED = [
    { type: "24P (24fps)", timebase: 24, ntsc: "TRUE", fcp_rate: 23.976 },
    { type: "Film (24fps)", timebase: 24, ntsc: "FALSE", fcp_rate: 24 },
    { type: "PAL (25fps)", timebase: 25, ntsc: "FALSE", fcp_rate: 25 },
    { type: "NTSC/HD (29.97fps)", timebase: 30, ntsc: "TRUE", fcp_rate: 29.97 },
    { type: "Video/HD (30fps)", timebase: 30, ntsc: "FALSE", fcp_rate: 30 },
    { type: "HD (59.94fps)", timebase: 60, ntsc: "TRUE", fcp_rate: 59.94 },
    { type: "HD (60fps)", timebase: 60, ntsc: "FALSE", fcp_rate: 60 }
  ].inspect # inspect tells the Integer 24 from the Float 24.0

  def load_module(prelude = "", home: self.home)
    in_child(<<~RUBY, home: home)
      #{prelude}
      error = error_of { require "Pellago_algorithm" }
      module_state.merge(error: error, arities: %i[add_log_notes to_frames].map { |m|
        Object.private_method_defined?(m) ? Object.instance_method(m).arity : nil })
    RUBY
  end

  def test_loading_defines_constants_private_methods_and_the_maker_folder_if_there_is_a_library
    home = home(:ready)
    state = load_module(home: home)
    assert_nil state[:error]
    assert_equal true, state[:libxml2_flag]
    assert_equal "pellago #{state[:version]}\n", `#{CLI} --version`, "the program's version"
    assert_equal FRAME_RATES_INSPECTED, state[:frame_rates].inspect
    assert_equal "#{home}/Library/Application Support/Tarnwick/Pellago.xml", state[:temp_xml_file]
    assert File.directory?(File.join(home, MAKER_FOLDER))
    refute File.exist?(state[:temp_xml_file]), "the module itself never makes TEMP_XML_FILE"
    assert_equal [-1, -1], state[:arities]
    assert_empty @stderr, "loading warns about nothing ($KCODE included)"

    home = home(:none)
    state = load_module(home: home)
    assert_equal [nil, :undefined], state.values_at(:error, :temp_xml_file), "no Library folder"
    assert_equal %i[add_log_notes to_frames], state[:methods].sort
    assert_empty Dir.children(home)
  end

  def test_only_orvale_equal_to_true_skips_the_file_set_up
    home = home(:ready)
    state = load_module("$orvale = true", home: home)
    assert_nil state[:error]
    assert_equal [:undefined, :undefined], state.values_at(:frame_rates, :temp_xml_file)
    assert_equal %i[add_log_notes to_frames], state[:methods].sort
    assert_equal true, state[:libxml2_flag]
    refute File.exist?(File.join(home, MAKER_FOLDER))

    always_equal = "$orvale = Object.new; def $orvale.==(other) = true"
    assert_equal :undefined, load_module(always_equal, home: home)[:frame_rates], "Ruby's =="

    home = home(:existing)
    state = load_module('$orvale = "true"', home: home)
    assert_equal FRAME_RATES_INSPECTED, state[:frame_rates].inspect, "a String that reads true"
    assert_equal "#{home}/#{MAKER_FOLDER}/Pellago.xml", state[:temp_xml_file]
    assert_equal "kept", File.read(File.join(home, MAKER_FOLDER, "keep.txt")), "existing folder kept"
  end

  def test_a_maker_folder_that_cannot_be_made_stops_the_load
    { blocked: "Errno::EEXIST", bare: "Errno::ENOENT" }.each do |library, error|
      home = home(library)
      state = load_module(home: home)
      assert_equal error, state[:error][0], library
      assert_includes state[:error][1], "#{home}/#{MAKER_FOLDER}", library
      assert_equal :undefined, state[:temp_xml_file], library
      assert_empty state[:methods], library
      refute File.directory?(File.join(home, MAKER_FOLDER)), library
    end
  end

  # Ruby 3.1 runs the Init function of every new feature it requires. A hard link to the built
  # module, with the same base name but in another folder, is a new feature to Ruby (another
  # path), while dlopen sees the same inode and hands back the image that is already loaded, with
  # its record of add_log_notes having been defined.
  def test_a_second_load_under_another_feature_name_fails_to_define_add_log_notes
    other = File.join(@tmp, "other")
    FileUtils.mkdir_p(other)
    File.link(File.join(RUBY_DIR, "Pellago_algorithm.so"), File.join(other, "Pellago_algorithm.so"))
    home = home(:ready)
    state = in_child(<<~RUBY, home: home)
      require "Pellago_algorithm"
      def to_frames(*) = :kept
      error = error_of { require #{File.join(other, 'Pellago_algorithm').inspect} }
      { error: error, to_frames: to_frames(1, 2, 3), frame_rates: FRAME_RATES.size,
        add_log_notes: add_log_notes("not a sheet.txt", nil, nil) }
    RUBY
    assert_equal ["TypeError", 'def for "add_log_notes" can only be used once'], state[:error]
    assert_equal :kept, state[:to_frames], "to_frames is not defined again"
    assert_equal false, state[:add_log_notes]
    assert_equal 7, state[:frame_rates]
    assert_match(/already initialized constant FRAME_RATES/, @stderr, "steps before ran again")
  end
end

class ModuleMethodsTest < Minitest::Test
  include ChildRuby

  def test_both_methods_are_private_take_exactly_three_arguments_and_ruby_strings_and_numbers
    results = in_child(<<~RUBY)
      require "Pellago_algorithm"
      host = Controller.new(column_headers: :before)
      timecode = "01:00:00;00"
      [error_of { to_frames("1", 25) }, error_of { to_frames("1", 25, "NDF", 0) },
       error_of { host.merge("log.xls", "in.xml") },
       error_of { host.merge(*%w[log.xls in.xml out.xml extra]) },
       error_of { Object.new.to_frames("1", 25, "NDF") }, host.column_headers, host.log,
       to_frames(timecode, 29.97, "DF"), to_frames(timecode, 30, "NDF"), timecode,
       to_frames("00:01:00:00", 25, :DF), to_frames("10", 25.0, nil).class,
       error_of { to_frames(nil, 25, "NDF") }, error_of { to_frames("1", "25", "NDF") },
       error_of { to_frames("1", Float::NAN, "NDF") }]
    RUBY
    counts = [["ArgumentError", "wrong number of arguments (2 for 3)"],
              ["ArgumentError", "wrong number of arguments (4 for 3)"]]
    assert_equal counts * 2, results[0..3]
    assert_equal "NoMethodError", results[4][0]
    assert_match(/private method `to_frames' called/, results[4][1])
    assert_equal [:before, []], results[5..6]
    assert_equal [107_892, 108_000, "01:00:00;00"], results[7..9]
    assert_equal 1500, results[10], "only the String DF selects drop-frame counting"
    assert_equal Integer, results[11]
    assert_equal %w[TypeError TypeError], [results[12][0], results[13][0]]
    assert_equal %w[FloatDomainError NaN], results[14]
  end

  def progress_log(clips)
    [[:indicator, :setIndeterminate, false], [:indicator, :setDoubleValue, 0],
     [:indicator, :setMaxValue, clips], [:view, :displayIfNeeded]] +
      [[:indicator, :incrementBy, 1], [:view, :displayIfNeeded]] * clips
  end

  def merge_in_child(sheet, xml, prelude: "", host: "Controller.new")
    in_child(<<~RUBY)
      #{prelude}
      require "Pellago_algorithm"
      host = #{host}
      error = error_of { $result = host.merge(#{sheet.inspect}, #{xml.inspect}, #{output.inspect}) }
      { result: $result, error: error, headers: host.column_headers, log: host.log }
    RUBY
  end

  # $ruby_cocoa unset reports progress; false touches no progress variable of the host.
  def test_merges_like_the_command_line_with_progress_and_headers
    sheet = File.join(SOURCE_DIR, "examples/log_sheet.xlsx")
    xml = File.join(SOURCE_DIR, "examples/project.xml")
    run = merge_in_child(sheet, xml)
    assert_nil run[:error]
    assert_nil run[:result]
    assert_equal progress_log(6), run[:log]
    by_cli = File.join(@tmp, "by_cli.xml")
    assert system(CLI, "merge", "--classic", sheet, xml, by_cli, out: File::NULL),
           "pellago merge failed"
    assert_equal File.binread(by_cli), File.binread(output)

    run = merge_in_child(sheet, xml, prelude: "$ruby_cocoa = false",
                                     host: "Controller.new(progress: false)")
    assert_nil run[:error]

    run = merge_in_child(data("headers_only.xls"), data("project.xml"))
    assert_equal ["Name", nil, 2.5], run[:headers], "strings, floats and nils as read"

    run = merge_in_child(File.join(SOURCE_DIR, "tests/workbook/data/typed_headers.xls"),
                         data("project.xml"))
    assert_equal ["Name", true, Date.new(2011, 5, 6), DateTime.new(2024, 3, 1, 12, 30, 15),
                  45_015, 12.0], run[:headers], "truth values, dates and seconds of a time of day"
  end

  def test_progress_objects_are_read_afresh_at_every_call
    swap = <<~RUBY
      class SwappingView
        def initialize(host) = (@host, @count = host, 0)
        def displayIfNeeded
          @count += 1
          @host.progressIndicator = ProgressRecorder.new(@host.log, :"indicator\#{@count}")
        end
      end
    RUBY
    run = merge_in_child(data("log_sheet.xls"), data("project.xml"), prelude: swap,
                         host: "Controller.new.tap { |h| h.progressView = SwappingView.new(h) }")
    assert_nil run[:error]
    assert_equal [[:indicator, :setIndeterminate, false], [:indicator, :setDoubleValue, 0],
                  [:indicator, :setMaxValue, 2], [:indicator1, :incrementBy, 1],
                  [:indicator2, :incrementBy, 1]], run[:log]
  end

  def test_whatever_the_host_raises_or_throws_arrives_unchanged
    File.write(output, "left as it was")
    failing = <<~RUBY
      class HostError < StandardError; end
      $raised = HostError.new("progress bar gone")
      class ProgressRecorder
        def incrementBy(step) = @log.size > 5 ? raise($raised) : @log << [@name, :incrementBy, step]
      end
    RUBY
    state = in_child(<<~RUBY)
      require "Pellago_algorithm"
      #{failing}
      host = Controller.new
      caught = begin
        host.merge(#{data('log_sheet.xls').inspect}, #{data('project.xml').inspect}, #{output.inspect})
      rescue HostError => e
        e
      end
      calls = host.log.size
      thrown = catch(:stop) do
        def (host.progressView).displayIfNeeded = throw(:stop, :thrown)
        host.merge(#{data('log_sheet.xls').inspect}, #{data('project.xml').inspect}, #{output.inspect})
      end
      { same: caught.equal?($raised), log: calls, thrown: thrown }
    RUBY
    assert state[:same], "the host's own exception object reaches the caller"
    assert_equal 6, state[:log]
    assert_equal :thrown, state[:thrown]
    assert_equal "left as it was", File.read(output)
  end

  def test_engine_failures_arrive_as_ruby_exceptions
    missing = File.join(@tmp, "missing.xml")
    not_a_workbook = File.join(@tmp, "notes.xlsx")
    File.write(not_a_workbook, "Name,Scene\n")
    state = in_child(<<~RUBY)
      require "Pellago_algorithm"
      host = Controller.new
      [error_of { host.merge(#{data('log_sheet.xls').inspect}, #{missing.inspect}, #{output.inspect}) },
       host.merge("log.XLS", nil, 0), error_of { host.merge(nil, "in.xml", "out.xml") }, host.log,
       error_of { host.merge(#{not_a_workbook.inspect}, #{data('project.xml').inspect}, #{output.inspect}) }]
    RUBY
    assert_equal "Errno::ENOENT", state[0][0]
    assert_includes state[0][1], missing
    assert_equal false, state[1], "not a log sheet: the other paths are not looked at"
    assert_equal "TypeError", state[2][0]
    assert_equal [], state[3]
    assert_equal "RuntimeError", state[4][0], "an error that comes with no errno"
    assert_match(/\A#{Regexp.escape(not_a_workbook)}: not an .xlsx workbook/, state[4][1])
    refute File.exist?(output)
  end

  # Running out of memory is a NoMemoryError; a document cut short merges what was recovered,
  # with a Ruby warning naming the file, the first error's place and the count. Nothing from
  # libxml2 reaches standard error.
  def test_memory_and_malformed_documents
    bomb = File.join(SOURCE_DIR, "tests/workbook/data/shared_bomb.xlsx")
    cut = File.join(@tmp, "cut.xml")
    File.write(cut, File.read(data("project.xml"))[0, 1000])
    state = in_child(<<~RUBY)
      require "Pellago_algorithm"
      host = Controller.new
      warnings = []
      Warning.singleton_class.define_method(:warn) { |message| warnings << message }
      merged = host.merge(#{data('log_sheet.xls').inspect}, #{cut.inspect}, #{output.inspect})
      written = File.exist?(#{output.inspect})
      File.delete(#{output.inspect})
      size = File.read("/proc/self/status")[/VmSize:\s+(\d+)/, 1].to_i * 1024
      Process.setrlimit(:AS, size + 150 * 1024 * 1024)
      [merged, written, warnings,
       error_of { host.merge(#{bomb.inspect}, #{data('project.xml').inspect}, #{output.inspect}) }]
    RUBY
    assert_nil state[0]
    assert state[1], "the recovered document is merged"
    assert_equal 1, state[2].size
    assert_match(/: warning: #{Regexp.escape(cut)} is not well-formed XML: line \d+, column \d+: .+; /,
                 state[2][0])
    assert_match(/; merged what could be recovered \(\d+ errors?\)\n\z/, state[2][0])
    assert_equal "NoMemoryError", state[3][0]
    refute File.exist?(output)
    assert_equal "", @stderr
  end

  def test_frame_rates_are_looked_up_in_the_constant_at_merge_time
    run = merge_in_child(data("log_sheet.xls"), data("project.xml"), prelude: "$orvale = true")
    assert_equal ["NameError", "uninitialized constant FRAME_RATES"], run[:error]
    refute File.exist?(output)

    own_table = <<~RUBY
      FRAME_RATES = [{ type: "odd", timebase: 25, ntsc: :FALSE, fcp_rate: 1 },
                     { type: "PAL as 30", timebase: 25.0, ntsc: "FALSE", fcp_rate: 30 }]
    RUBY
    run = merge_in_child(data("log_sheet.xls"), data("project.xml"),
                         prelude: "$orvale = true; #{own_table}")
    assert_nil run[:error]
    assert_includes File.read(output), "<marker> <in>30</in>", "00:00:01:00 at the host's rate"
  end
end
