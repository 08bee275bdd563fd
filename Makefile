# make run   install what is missing, build, start Zentol on the default job
# make test  install what is missing, build, run every test (GUI tests under
#            xvfb-run), then the test programs again under AddressSanitizer+UBSan
# make fuzz  build the libFuzzer targets with clang and run each one for
#            FUZZ_SECONDS (not part of make test; see docs/fuzzing.md)
PACKAGES := cmake g++ make ccache libgtest-dev libgmock-dev libbenchmark-dev \
            qt6-base-dev qt6-charts-dev libqt6opengl6-dev libgl-dev libglu1-mesa-dev libgl1-mesa-dri \
            xvfb xauth mopac dos2unix zlib1g-dev libopenbabel-dev openbabel slurm-wlm munge
FUZZ_PACKAGES := cmake make ccache zlib1g-dev clang libclang-rt-14-dev
BUILD := build
ASAN_BUILD := build-asan
FUZZ_BUILD := build-fuzz
FUZZ_SECONDS ?= 300
FUZZ_TARGETS ?= xyz key emphasis def library point_group mopac_listing mopac_mgf tinker
JOBS ?= 2
SUDO := $(shell [ "$$(id -u)" = 0 ] || echo sudo)
export CCACHE_DIR ?= $(CURDIR)/.ccache

.PHONY: run test deps fuzz-deps build build-asan test-asan build-fuzz fuzz bench clean

# Installs the Debian packages of the list given that are not there yet.
define install_missing
	@missing=""; for p in $(1); do \
	  dpkg-query -W -f='$${Status}' $$p 2>/dev/null | grep -q "install ok installed" || missing="$$missing $$p"; \
	done; \
	if [ -n "$$missing" ]; then \
	  echo "Installing:$$missing"; \
	  $(SUDO) apt-get update -qq && DEBIAN_FRONTEND=noninteractive $(SUDO) apt-get install -y -qq $$missing; \
	fi
endef

deps:
	$(call install_missing,$(PACKAGES))

fuzz-deps:
	$(call install_missing,$(FUZZ_PACKAGES))

$(BUILD)/CMakeCache.txt:
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo

build: deps $(BUILD)/CMakeCache.txt
	cmake --build $(BUILD) -j$(JOBS)

# A copy of the benzene example in the scratch folder, not the tracked file.
run: build
	./$(BUILD)/src/zentol --example benzene

$(ASAN_BUILD)/CMakeCache.txt:
	cmake -S . -B $(ASAN_BUILD) -DCMAKE_BUILD_TYPE=Debug -DZENTOL_SANITIZE=ON -DZENTOL_WITH_QT=OFF -DZENTOL_BENCH=OFF

build-asan: deps $(ASAN_BUILD)/CMakeCache.txt
	cmake --build $(ASAN_BUILD) -j$(JOBS)

test-asan: build-asan
	ASAN_OPTIONS=detect_leaks=0 UBSAN_OPTIONS=print_stacktrace=1 \
	  ctest --test-dir $(ASAN_BUILD) --output-on-failure -j$(JOBS)

$(FUZZ_BUILD)/CMakeCache.txt:
	CC=clang CXX=clang++ cmake -S . -B $(FUZZ_BUILD) -DCMAKE_BUILD_TYPE=Debug -DZENTOL_FUZZ=ON \
	  -DZENTOL_WITH_QT=OFF -DZENTOL_BENCH=OFF

build-fuzz: fuzz-deps $(FUZZ_BUILD)/CMakeCache.txt
	cmake --build $(FUZZ_BUILD) -j$(JOBS) --target fuzzers

fuzz: build-fuzz
	sh tests/fuzz/run_fuzzers.sh $(FUZZ_BUILD) $(FUZZ_SECONDS) $(FUZZ_TARGETS)

test: build
	xvfb-run -a ctest --test-dir $(BUILD) --output-on-failure -j$(JOBS)
	$(MAKE) --no-print-directory test-asan

bench: build
	./$(BUILD)/bench/save_and_reload_bench
	./$(BUILD)/bench/bond_perception_bench
	./$(BUILD)/bench/mopac_listing_bench
	./$(BUILD)/bench/orca_update_bench
	xvfb-run -a ./$(BUILD)/bench/frame_bench
	xvfb-run -a ./$(BUILD)/bench/startup_bench
	xvfb-run -a ./$(BUILD)/bench/rotation_bench
	xvfb-run -a ./$(BUILD)/bench/fragment_bench
	./$(BUILD)/bench/orbital_map_bench
	./$(BUILD)/src/zentol-orbgrid --steps 64 -o $(BUILD)/bench-water.cube tests/data/orbitals/water.mgf
	xvfb-run -a ./$(BUILD)/src/zentol-orbview --benchmark 240 $(BUILD)/bench-water.cube

clean:
	rm -rf $(BUILD) $(ASAN_BUILD) $(FUZZ_BUILD)
