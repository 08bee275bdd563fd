# make run   install what is missing, build, start Zentol on the default job
# make test  install what is missing, build, run every test (GUI tests under
#            xvfb-run), then the test programs again under AddressSanitizer+UBSan
PACKAGES := cmake g++ make ccache libgtest-dev libgmock-dev libbenchmark-dev \
            qt6-base-dev qt6-charts-dev libqt6opengl6-dev libgl-dev libglu1-mesa-dev libgl1-mesa-dri \
            xvfb xauth mopac dos2unix zlib1g-dev
BUILD := build
ASAN_BUILD := build-asan
JOBS ?= 2
SUDO := $(shell [ "$$(id -u)" = 0 ] || echo sudo)
export CCACHE_DIR ?= $(CURDIR)/.ccache

.PHONY: run test deps build build-asan test-asan bench clean

deps:
	@missing=""; for p in $(PACKAGES); do \
	  dpkg-query -W -f='$${Status}' $$p 2>/dev/null | grep -q "install ok installed" || missing="$$missing $$p"; \
	done; \
	if [ -n "$$missing" ]; then \
	  echo "Installing:$$missing"; \
	  $(SUDO) apt-get update -qq && DEBIAN_FRONTEND=noninteractive $(SUDO) apt-get install -y -qq $$missing; \
	fi

$(BUILD)/CMakeCache.txt:
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo

build: deps $(BUILD)/CMakeCache.txt
	cmake --build $(BUILD) -j$(JOBS)

run: build
	./$(BUILD)/src/zentol

$(ASAN_BUILD)/CMakeCache.txt:
	cmake -S . -B $(ASAN_BUILD) -DCMAKE_BUILD_TYPE=Debug -DZENTOL_SANITIZE=ON -DZENTOL_WITH_QT=OFF -DZENTOL_BENCH=OFF

build-asan: deps $(ASAN_BUILD)/CMakeCache.txt
	cmake --build $(ASAN_BUILD) -j$(JOBS)

test-asan: build-asan
	ASAN_OPTIONS=detect_leaks=0 UBSAN_OPTIONS=print_stacktrace=1 \
	  ctest --test-dir $(ASAN_BUILD) --output-on-failure -j$(JOBS)

test: build
	xvfb-run -a ctest --test-dir $(BUILD) --output-on-failure -j$(JOBS)
	$(MAKE) --no-print-directory test-asan

bench: build
	./$(BUILD)/bench/save_and_reload_bench
	./$(BUILD)/bench/bond_perception_bench
	./$(BUILD)/bench/mopac_listing_bench
	xvfb-run -a ./$(BUILD)/bench/frame_bench
	xvfb-run -a ./$(BUILD)/bench/rotation_bench
	xvfb-run -a ./$(BUILD)/bench/fragment_bench

clean:
	rm -rf $(BUILD) $(ASAN_BUILD)
