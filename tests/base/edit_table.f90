! Writes the table of fixed-width and list-directed output that edit_test.cpp compares with, as this
! compiler's own runtime writes it. One case a line: the descriptor (or "list"), then each item as
! kind and exact value (integers in decimal, reals as their bits in hex, logicals as T or F, texts
! as length:text), then what is to be written, between bars.
program edit_table
    use, intrinsic :: ieee_arithmetic
    use, intrinsic :: iso_fortran_env, only: i4 => int32, i8 => int64, r4 => real32, r8 => real64
    implicit none

    integer :: scratch
    integer(i8) :: seed = 20240229_i8

    ! The descriptors of the program's own files.
    character(len=6), parameter :: integer_fields(7) = [character(len=6) :: &
        'I8', 'I6', 'I5', 'I4', 'I3', 'I5.5', 'I4.4']
    character(len=6), parameter :: real_fields(18) = [character(len=6) :: &
        'E16.8', 'E11.4', 'E10.4', 'E14.7', 'E14.5', 'E12.5', 'E16.5', &
        'F5.1', 'F6.2', 'F8.1', 'F10.1', 'F10.3', 'F10.5', 'F5.3', 'F7.4', 'F8.4', 'F8.2', 'F11.4']

    open (newunit=scratch, status='scratch', form='formatted')
    call integers()
    call texts_and_logicals()
    call fields_in_use()
    call leading_zero()
    call ties()
    call extremes()
    call not_finite()
    call random_fields()
    call list_single()
    call list_mixed()

contains

    subroutine integers()
        integer(i8), parameter :: values(19) = [0_i8, 1_i8, -1_i8, 7_i8, 9_i8, -9_i8, 10_i8, 99_i8, &
            120_i8, -120_i8, 999_i8, 1000_i8, 9999_i8, -9999_i8, 12345_i8, 99999_i8, 100000_i8, &
            2147483647_i8, -2147483647_i8 - 1_i8]
        character(len=6), parameter :: odd(10) = [character(len=6) :: &
            'I1', 'I2', 'I6.5', 'I5.0', 'I1.1', 'I3.2', 'I12', 'I11', 'I20.15', 'I2.2']
        integer :: n, f
        do f = 1, size(integer_fields)
            do n = 1, size(values)
                call put_i(integer_fields(f), values(n))
            end do
        end do
        do f = 1, size(odd)
            do n = 1, size(values), 2
                call put_i(odd(f), values(n))
            end do
        end do
        call put_i('I20', huge(0_i8))
        call put_i('I20', -huge(0_i8) - 1_i8)
        call put_i('I19', huge(0_i8))
        call put_i('I19', -huge(0_i8) - 1_i8)
        call put_i('I22.21', huge(0_i8))
        call put_i('I22.21', -huge(0_i8) - 1_i8)
    end subroutine integers

    subroutine texts_and_logicals()
        character(len=3) :: field
        integer :: w
        do w = 1, 9
            write (field, '(a,i1)') 'A', w
            call put_a(field, '')
            call put_a(field, 'x')
            call put_a(field, 'torvex')
            call put_a(field, ' in out ')
            call put_a(field, 'a|b"c''d')
        end do
        call put_a('A20', 'trailing blanks   ')
        do w = 1, 8
            write (field, '(a,i1)') 'L', w
            call put_l(field, .true.)
            call put_l(field, .false.)
        end do
    end subroutine texts_and_logicals

    ! Every real field in use, over the magnitudes that runs meet and some that they should not.
    subroutine fields_in_use()
        real(r8), parameter :: values(24) = [0.0_r8, 1.0_r8, -1.5_r8, 0.09_r8, 0.001234_r8, &
            123.456_r8, -0.04_r8, 0.5_r8, 0.96_r8, 9.9996_r8, 10.0_r8, 99.95_r8, -99.95_r8, 999.999_r8, &
            1234.5678_r8, -1234.5678_r8, 99999.9_r8, 123456.78_r8, 9999999.5_r8, 1.0e25_r8, &
            -1.0e25_r8, 1.0e-15_r8, -3.3e-7_r8, 9.99999999e-3_r8]
        integer :: n, f
        do f = 1, size(real_fields)
            do n = 1, size(values)
                call put_r4(real_fields(f), real(values(n), r4))
            end do
            do n = 1, size(values), 2
                call put_r8(real_fields(f), values(n))
            end do
            call put_r8('F10.2', values(f))
            call put_r4('F10.2', real(values(f), r4))
        end do
    end subroutine fields_in_use

    ! The same value in ever narrower fields: the zero before the point goes first, then all digits.
    subroutine leading_zero()
        real(r8), parameter :: values(6) = [0.001234_r8, -0.001234_r8, 0.0_r8, -0.0_r8, 0.96_r8, -0.5_r8]
        character(len=6) :: field
        integer :: n, w, d
        do n = 1, size(values)
            do w = 13, 8, -1
                write (field, '(a,i0,a)') 'E', w, '.4'
                call put_r4(field, real(values(n), r4))
                call put_r8(field, values(n))
            end do
            do d = 0, 3
                do w = d + 1, d + 4
                    write (field, '(a,i0,a,i0)') 'F', w, '.', d
                    call put_r4(field, real(values(n), r4))
                end do
            end do
        end do
        call put_r8('E10.4', 1.5e-120_r8)
        call put_r8('E9.4', 1.5e-120_r8)
        call put_r8('E10.4', -1.5e120_r8)
        call put_r8('E11.4', -1.5e120_r8)
        call put_r8('E7.1', 9.6e99_r8)
        call put_r8('E7.1', 9.6e98_r8)
        call put_r8('E7.1', 9.6e-101_r8)
    end subroutine leading_zero

    ! Halves that binary holds exactly go to the even digit; the others to the nearer one.
    subroutine ties()
        real(r8), parameter :: halves(10) = [0.5_r8, 1.5_r8, 2.5_r8, 3.5_r8, 9.5_r8, 10.5_r8, 99.5_r8, &
            1000.5_r8, 8388606.5_r8, 4194303.5_r8]
        real(r8), parameter :: eighths(8) = [0.125_r8, 0.375_r8, 0.625_r8, 0.875_r8, 1.125_r8, 2.375_r8, &
            9.875_r8, 99.875_r8]
        real(r8), parameter :: nearly(6) = [0.15_r8, 0.45_r8, 0.05_r8, 2.675_r8, 1.005_r8, 0.995_r8]
        integer :: n
        do n = 1, size(halves)
            call put_r4('F10.0', real(halves(n), r4))
            call put_r8('F10.0', -halves(n))
            call put_r4('F10.1', real(halves(n)/2, r4))
            call put_r8('F10.1', -halves(n)/2)
            call put_r4('E9.1', real(halves(n), r4))
        end do
        do n = 1, size(eighths)
            call put_r4('F8.2', real(eighths(n), r4))
            call put_r8('F8.2', -eighths(n))
            call put_r4('E10.2', real(eighths(n), r4))
        end do
        do n = 1, size(nearly)
            call put_r4('F6.1', real(nearly(n), r4))
            call put_r8('F6.1', nearly(n))
            call put_r4('F6.2', real(nearly(n), r4))
            call put_r8('F6.2', nearly(n))
        end do
        call put_r4('F5.1', -0.04_r4)
        call put_r4('F5.1', -0.05_r4)
        call put_r4('F5.1', -0.06_r4)
        call put_r4('F4.1', -0.04_r4)
        call put_r4('F3.1', -0.04_r4)
        call put_r4('F2.1', -0.04_r4)
        call put_r4('F3.0', -0.4_r4)
        call put_r4('F2.0', -0.4_r4)
        call put_r4('F2.0', 0.4_r4)
    end subroutine ties

    subroutine extremes()
        real(r4) :: small(5)
        real(r8) :: large(5)
        character(len=7), parameter :: fields(9) = [character(len=7) :: 'E16.8', 'E14.7', 'E11.4', &
            'E30.20', 'F10.3', 'F50.2', 'F60.50', 'F45.1', 'E10.4']
        integer :: n, f
        small = [transfer(1_i4, 1.0_r4), transfer(8388607_i4, 1.0_r4), tiny(1.0_r4), &
            huge(1.0_r4), epsilon(1.0_r4)]
        large = [transfer(1_i8, 1.0_r8), transfer(4503599627370495_i8, 1.0_r8), tiny(1.0_r8), &
            huge(1.0_r8), epsilon(1.0_r8)]
        do f = 1, size(fields)
            do n = 1, size(small)
                call put_r4(fields(f), small(n))
                call put_r8(fields(f), -large(n))
            end do
            call put_r4(fields(f), -0.0_r4)
            call put_r8(fields(f), -0.0_r8)
        end do
        call put_r8('F312.2', huge(1.0_r8))
        call put_r8('F311.1', -huge(1.0_r8))
        call put_r8('F310.1', -huge(1.0_r8))
    end subroutine extremes

    subroutine not_finite()
        character(len=6) :: field
        integer :: w, d
        do w = 1, 12
            do d = 0, min(w - 1, 4), 2
                write (field, '(a,i0,a,i0)') 'F', w, '.', d
                call put_r4(field, ieee_value(1.0_r4, ieee_quiet_nan))
                call put_r4(field, ieee_value(1.0_r4, ieee_positive_inf))
                call put_r8(field, ieee_value(1.0_r8, ieee_negative_inf))
            end do
        end do
        do w = 7, 16, 3
            write (field, '(a,i0,a)') 'E', w, '.4'
            call put_r8(field, ieee_value(1.0_r8, ieee_quiet_nan))
            call put_r8(field, ieee_value(1.0_r8, ieee_positive_inf))
            call put_r4(field, ieee_value(1.0_r4, ieee_negative_inf))
            call put_r4(field, -ieee_value(1.0_r4, ieee_quiet_nan))
        end do
    end subroutine not_finite

    ! Any bit pattern at all in the fields in use, and magnitudes nearer to daily use.
    subroutine random_fields()
        integer :: n, f
        do f = 1, size(real_fields)
            do n = 1, 6
                call put_r4(real_fields(f), random_r4())
                call put_r8(real_fields(f), random_r8())
                call put_r4(real_fields(f), random_usual())
                call put_r8(real_fields(f), real(random_usual(), r8)/3)
            end do
        end do
    end subroutine random_fields

    subroutine list_single()
        real(r8), parameter :: values(34) = [0.0_r8, 1.0_r8, 0.1_r8, 0.09999999_r8, 0.0999999999_r8, &
            0.09_r8, 0.1000001_r8, 0.01_r8, 1.5_r8, 9.9999999_r8, 10.0_r8, 123.456_r8, 1234.5_r8, 99999.0_r8, &
            1.0e6_r8, 12345678.0_r8, 99999999.0_r8, 1.0e8_r8, 123456789.0_r8, 999999936.0_r8, &
            999999999.4_r8, 999999999.6_r8, 1.0e9_r8, 1.0e10_r8, 1.0e15_r8, 9.9999999999999995e16_r8, &
            1.0e17_r8, 1.0e25_r8, 3.0e38_r8, 1.0e-5_r8, 1.0e-30_r8, 2.0_r8/3.0_r8, &
            31415.926535897932_r8, 6.1e-39_r8]
        integer(i4), parameter :: whole(9) = [0_i4, 1_i4, -1_i4, 42_i4, 120_i4, 99999_i4, 2147483647_i4, &
            -2147483647_i4, -2147483647_i4 - 1_i4]
        integer :: n
        do n = 1, size(whole)
            write (scratch, *) whole(n)
            call put_list(item_i(whole(n)))
        end do
        do n = 1, size(values)
            call list_r4(real(values(n), r4))
            call list_r4(-real(values(n), r4))
            call list_r8(values(n))
            call list_r8(-values(n))
        end do
        call list_r4(transfer(1_i4, 1.0_r4))
        call list_r4(tiny(1.0_r4))
        call list_r4(huge(1.0_r4))
        call list_r4(nearest(0.1_r4, -1.0_r4))
        call list_r4(nearest(1.0e9_r4, -1.0_r4))
        call list_r4(ieee_value(1.0_r4, ieee_quiet_nan))
        call list_r4(ieee_value(1.0_r4, ieee_positive_inf))
        call list_r4(ieee_value(1.0_r4, ieee_negative_inf))
        call list_r8(transfer(1_i8, 1.0_r8))
        call list_r8(tiny(1.0_r8))
        call list_r8(huge(1.0_r8))
        call list_r8(nearest(0.1_r8, -1.0_r8))
        call list_r8(nearest(1.0e17_r8, -1.0_r8))
        call list_r8(1.0e100_r8)
        call list_r8(-1.0e-100_r8)
        call list_r8(ieee_value(1.0_r8, ieee_quiet_nan))
        call list_r8(ieee_value(1.0_r8, ieee_positive_inf))
        call list_r8(ieee_value(1.0_r8, ieee_negative_inf))
        do n = 1, 60
            call list_r4(random_r4())
            call list_r8(random_r8())
            call list_r4(random_usual())
            call list_r8(real(random_usual(), r8)/3)
        end do
        write (scratch, *) .true.
        call put_list(item_l(.true.))
        write (scratch, *) .false.
        call put_list(item_l(.false.))
        write (scratch, *) ''
        call put_list(item_a(''))
        write (scratch, *) 'Read mesh number from : '
        call put_list(item_a('Read mesh number from : '))
        write (scratch, *) 'a|b "c" ''d'''
        call put_list(item_a('a|b "c" ''d'''))
    end subroutine list_single

    subroutine list_mixed()
        write (scratch, *) 'total: ', 120_i4
        call put_list(item_a('total: ')//item_i(120_i4))
        write (scratch, *) 'z0 = ', 0.03_r4, ' m'
        call put_list(item_a('z0 = ')//item_r4(0.03_r4)//item_a(' m'))
        write (scratch, *) 1_i4, 2_i4, -3_i4
        call put_list(item_i(1_i4)//item_i(2_i4)//item_i(-3_i4))
        write (scratch, *) 1.0_r4, 2.5e-3_r4, -1.0e12_r4, 0.0_r4
        call put_list(item_r4(1.0_r4)//item_r4(2.5e-3_r4)//item_r4(-1.0e12_r4)//item_r4(0.0_r4))
        write (scratch, *) 1.0_r8, -2.5e-3_r8
        call put_list(item_r8(1.0_r8)//item_r8(-2.5e-3_r8))
        write (scratch, *) 'file ', 'name.map'
        call put_list(item_a('file ')//item_a('name.map'))
        write (scratch, *) 'file ', 'name.map', 7_i4, 'of', 9_i4
        call put_list(item_a('file ')//item_a('name.map')//item_i(7_i4)//item_a('of')//item_i(9_i4))
        write (scratch, *) .true., .false., 'x', .true.
        call put_list(item_l(.true.)//item_l(.false.)//item_a('x')//item_l(.true.))
        write (scratch, *) 3_i4, 0.1_r8, 'deg', 4.0_r4, .false.
        call put_list(item_i(3_i4)//item_r8(0.1_r8)//item_a('deg')//item_r4(4.0_r4)//item_l(.false.))
        write (scratch, *) '', 5_i4, '', '', 6_i4
        call put_list(item_a('')//item_i(5_i4)//item_a('')//item_a('')//item_i(6_i4))
        write (scratch, *) ieee_value(1.0_r4, ieee_quiet_nan), 1_i4
        call put_list(item_r4(ieee_value(1.0_r4, ieee_quiet_nan))//item_i(1_i4))
        write (scratch, *) -0.0_r4, -0.0_r8
        call put_list(item_r4(-0.0_r4)//item_r8(-0.0_r8))
    end subroutine list_mixed

    subroutine list_r4(value)
        real(r4), intent(in) :: value
        write (scratch, *) value
        call put_list(item_r4(value))
    end subroutine list_r4

    subroutine list_r8(value)
        real(r8), intent(in) :: value
        write (scratch, *) value
        call put_list(item_r8(value))
    end subroutine list_r8

    ! Prints the row of the record that was just written to the scratch file.
    subroutine put_list(items)
        character(len=*), intent(in) :: items
        character(len=200) :: record
        integer :: length, status
        rewind (scratch)
        read (scratch, '(a)', advance='no', size=length, iostat=status) record
        print '(a)', 'list'//items//' |'//record(1:length)//'|'
        rewind (scratch)
    end subroutine put_list

    subroutine put_i(field, value)
        character(len=*), intent(in) :: field
        integer(i8), intent(in) :: value
        character(len=400) :: text
        character(len=24) :: digits
        write (text, '('//trim(field)//',"|")') value
        write (digits, '(i0)') value
        call put(field, ' i '//trim(digits), text)
    end subroutine put_i

    subroutine put_r4(field, value)
        character(len=*), intent(in) :: field
        real(r4), intent(in) :: value
        character(len=400) :: text
        write (text, '('//trim(field)//',"|")') value
        call put(field, item_r4(value), text)
    end subroutine put_r4

    subroutine put_r8(field, value)
        character(len=*), intent(in) :: field
        real(r8), intent(in) :: value
        character(len=400) :: text
        write (text, '('//trim(field)//',"|")') value
        call put(field, item_r8(value), text)
    end subroutine put_r8

    subroutine put_a(field, value)
        character(len=*), intent(in) :: field, value
        character(len=400) :: text
        write (text, '('//trim(field)//',"|")') value
        call put(field, item_a(value), text)
    end subroutine put_a

    subroutine put_l(field, value)
        character(len=*), intent(in) :: field
        logical, intent(in) :: value
        character(len=400) :: text
        write (text, '('//trim(field)//',"|")') value
        call put(field, item_l(value), text)
    end subroutine put_l

    ! `text` ends at its last bar.
    subroutine put(field, items, text)
        character(len=*), intent(in) :: field, items, text
        print '(a)', trim(field)//items//' |'//text(1:index(text, '|', back=.true.))
    end subroutine put

    function item_i(value) result(item)
        integer(i4), intent(in) :: value
        character(len=:), allocatable :: item
        character(len=24) :: digits
        write (digits, '(i0)') value
        item = ' i '//trim(digits)
    end function item_i

    function item_r4(value) result(item)
        real(r4), intent(in) :: value
        character(len=:), allocatable :: item
        character(len=8) :: bits
        write (bits, '(z8.8)') transfer(value, 0_i4)
        item = ' r4 '//bits
    end function item_r4

    function item_r8(value) result(item)
        real(r8), intent(in) :: value
        character(len=:), allocatable :: item
        character(len=16) :: bits
        write (bits, '(z16.16)') transfer(value, 0_i8)
        item = ' r8 '//bits
    end function item_r8

    function item_l(value) result(item)
        logical, intent(in) :: value
        character(len=:), allocatable :: item
        item = merge(' l T', ' l F', value)
    end function item_l

    function item_a(value) result(item)
        character(len=*), intent(in) :: value
        character(len=:), allocatable :: item
        character(len=8) :: length
        write (length, '(i0)') len(value)
        item = ' a '//trim(length)//':'//value
    end function item_a

    ! Sixteen random bits of the minimal standard generator (Park and Miller 1988).
    function random_bits() result(bits)
        integer(i8) :: bits
        seed = mod(48271_i8*seed, 2147483647_i8)
        bits = iand(ishft(seed, -8), 65535_i8)
    end function random_bits

    function random_r4() result(value)
        real(r4) :: value
        integer(i8) :: high
        high = random_bits()
        value = transfer(int(ior(ishft(high - 32768_i8, 16), random_bits()), i4), value)
    end function random_r4

    function random_r8() result(value)
        real(r8) :: value
        integer(i8) :: bits
        integer :: n
        bits = 0
        do n = 1, 4
            bits = ior(ishft(bits, 16), random_bits())
        end do
        value = transfer(bits, value)
    end function random_r8

    function random_usual() result(value)
        real(r4) :: value
        value = real(random_bits() - 32768_i8, r4)*10.0_r4**int(mod(random_bits(), 13_i8) - 9_i8)
    end function random_usual

end program edit_table
